#include "Import/FlomoHTML.h"

#include <utility>

#include <fmt/format.h>

#include "Core/Extensions/TagNames.h"
#include "Core/Extensions/TagUtilities.h"
#include "Import/FlomoMarkup.h"
#include "Import/ImportError.h"
#include "Platform/Text/LineEnds.h"
#include "Platform/Text/Replacing.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr std::string_view noteBegins = "<div class=\"memo\">";

std::vector<std::string> tagsOf(std::string_view content, std::string_view text) {
  std::vector<std::string> tags = FlomoMarkup::linkedTagsOf(content);
  if (tags.empty()) tags = FlomoMarkup::tagsIn(text);
  // Ours alone: in a note they would make it, say, a message from the phone.
  std::erase_if(tags, [](const std::string& tag) { return TagNames::isHidden(tag); });
  return TagUtilities::uniqueTags(tags);
}

std::string bodyOf(std::string_view text, const std::vector<std::string>& tags) {
  std::string body(trimSpaceAndBreaks(text));
  for (const std::string& tag : tags) {
    const std::string written = fmt::format("#{}", tag);
    body = std::string(trimHorizontal(replacingAll(body, written, "")));
  }
  return std::string(trimSpaceAndBreaks(body));
}

}  // namespace

void FlomoHTML::Reader::feed(std::string_view piece) {
  buffer_ += piece;
  std::size_t begin = 0;
  for (;;) {
    const std::size_t next = buffer_.find(noteBegins, searched_);
    if (next == std::string::npos) break;
    if (isInNote_) takeNote(std::string_view(buffer_).substr(begin, next - begin));
    isInNote_ = true;
    begin = searched_ = next + noteBegins.size();
  }
  // The last bytes may be the first of a beginning.
  const std::size_t open = noteBegins.size() - 1;
  if (buffer_.size() > searched_ + open) searched_ = buffer_.size() - open;
  if (!isInNote_) begin = searched_;
  buffer_.erase(0, begin);
  searched_ -= begin;
}

void FlomoHTML::Reader::finish() {
  if (std::exchange(isInNote_, false)) takeNote(buffer_);
  buffer_.clear();
  searched_ = 0;
}

void FlomoHTML::Reader::takeNote(std::string_view block) const {
  if (!isValidUtf8(block)) throw ImportError("导出的网页不是 UTF-8 文本，请从 flomo 重新导出");
  const auto found = FlomoMarkup::contentOf(block);
  if (!found) return;
  const std::string content = withLineFeeds(*found);
  const std::string text = FlomoMarkup::textOf(content);
  const auto time = FlomoMarkup::timeOf(block);
  const auto moment = time ? FlomoMarkup::parseTime(*time) : std::nullopt;
  ImportedMemo memo{.date = moment ? moment->date : today_,
                    .time = moment ? moment->time : "00:00",
                    .body = {},
                    .tags = tagsOf(content, text),
                    .mediaRefs = FlomoMarkup::mediaOf(block),
                    .isDated = moment.has_value()};
  memo.body = bodyOf(text, memo.tags);
  if (memo.body.empty() && memo.tags.empty() && memo.mediaRefs.empty()) return;
  take_(std::move(memo));
}

std::vector<ImportedMemo> FlomoHTML::parse(std::string_view html, Day today) {
  std::vector<ImportedMemo> memos;
  Reader reader(today, [&](ImportedMemo&& memo) { memos.push_back(std::move(memo)); });
  reader.feed(html);
  reader.finish();
  return memos;
}

}  // namespace nomely
