#include "Core/Query/MemoFilter.h"

#include <algorithm>

#include "Core/Extensions/AttachmentKinds.h"
#include "Core/Extensions/TagNames.h"
#include "Core/Query/MemoEntry.h"

namespace nomely {
namespace {

using AttachmentKinds::isAudio;
using AttachmentKinds::isImage;

bool isOtherFile(std::string_view name) {
  return !isImage(name) && !isAudio(name);
}

bool isYearsBefore(Day day, Day reference) {
  const std::chrono::year_month_day one = day.civil();
  const std::chrono::year_month_day other = reference.civil();
  return one.month() == other.month() && one.day() == other.day() && one.year() < other.year();
}

bool hasTag(const Memo& memo, std::string_view tag) {
  return std::ranges::any_of(memo.tags,
                             [&](std::string_view own) { return TagNames::isOrIsBelow(own, tag); });
}

bool hasLink(const Memo& memo) {
  return memo.body.find("http://") != std::string::npos ||
         memo.body.find("https://") != std::string::npos;
}

}  // namespace

bool MemoFilter::mayHold(Day day) const {
  return (!from || day >= *from) && (!to || day <= *to) &&
         (!onThisDay || isYearsBefore(day, *onThisDay));
}

bool MemoFilter::holds(Day day, const Memo& memo) const {
  const auto hasFile = [&](auto belongs) { return std::ranges::any_of(memo.attachments, belongs); };
  return mayHold(day) && (!pinned || memo.pinned) && (!untagged || memo.tags.empty()) &&
         (!images || hasFile(isImage)) && (!audio || hasFile(isAudio)) &&
         (!files || hasFile(isOtherFile)) &&
         std::ranges::all_of(tags, [&](const std::string& tag) { return hasTag(memo, tag); }) &&
         (!mainTimeline || !memo.isExcludedFromTimeline()) && (!links || hasLink(memo));
}

bool MemoFilter::matches(Day day, const Memo& memo) const {
  return holds(day, memo) && isVisible(memo);
}

}  // namespace nomely
