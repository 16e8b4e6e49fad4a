#include "Core/Lifecycle/Maintenance/LegacyColorSpans.h"

#include <fmt/format.h>

#include "Core/Markdown/Inline/ColorSpans.h"
#include "Core/Storage/MaintenanceWork.h"
#include "Platform/Cancellation.h"
#include "Platform/Error.h"

namespace nomely {
namespace {

bool unwrap(Memo& memo) {
  std::string body = LegacyColorSpans::unwrapped(memo.body);
  if (body == memo.body) return false;
  memo.body = std::move(body);
  return true;
}

std::size_t cleanDay(Day day, const MemoService& service) {
  std::size_t cleaned = 0;
  for (Memo& memo : service.days().listMemos(day)) {
    if (!unwrap(memo)) continue;
    try {
      // As it stands by now: what changed meanwhile is kept.
      cleaned += service.rewrite(day, memo.seqNumber, unwrap) ? 1 : 0;
    } catch (const Error&) {
      MaintenanceWork::logOrRethrow(
          fmt::format("⚠️ LegacyColorSpans.clean {} #{}", day.string(), memo.seqNumber));
    }
  }
  return cleaned;
}

}  // namespace

std::string LegacyColorSpans::unwrapped(std::string_view body) {
  std::string text(body);
  for (;;) {
    // The outermost of nested spans goes first, with the first end tag; the next round finds more.
    const std::vector<SpanMatch> spans = ColorSpans::colors(text);
    if (spans.empty()) return text;
    std::string rest;
    std::size_t from = 0;
    for (const SpanMatch& span : spans) {
      rest.append(text, from, span.range.begin - from);
      rest.append(text, span.contentRange.begin, span.contentRange.end - span.contentRange.begin);
      from = span.range.end;
    }
    rest.append(text, from);
    text = std::move(rest);
  }
}

std::size_t LegacyColorSpans::clean(const MemoService& service, const std::stop_token& stop) {
  std::size_t cleaned = 0;
  for (const Day day : service.days().dayFolders()) {
    throwIfStopped(stop);
    try {
      cleaned += cleanDay(day, service);
    } catch (const Error&) {
      MaintenanceWork::logOrRethrow("⚠️ LegacyColorSpans.clean");
    }
  }
  return cleaned;
}

}  // namespace nomely
