#include "Feishu/Messages/FeishuMemoWriter.h"

#include <algorithm>
#include <limits>

#include "Core/Extensions/DateFormatters.h"
#include "Core/Extensions/TagNames.h"
#include "Core/Markdown/Text/TagParser.h"
#include "Platform/System/Log.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

using Kind = FeishuMemoWriter::WriteResult::Kind;

}  // namespace

std::vector<std::string> FeishuMemoWriter::resolveTags(std::string_view body,
                                                       const std::string& messageId,
                                                       const std::vector<std::string>& extraTags) {
  std::vector<std::string> tags{"飞书", "_feishu_import"};
  if (!messageId.empty()) tags.push_back(FeishuDayMarks::messageTag + messageId);
  const auto add = [&](const std::string& tag) {
    if (std::ranges::find(tags, tag) == tags.end()) tags.push_back(tag);
  };
  for (const std::string& tag : TagParser::tags(body))
    if (!TagNames::isHidden(tag)) add(tag);
  for (const std::string& tag : extraTags) add(tag);
  return tags;
}

bool FeishuMemoWriter::knowsMessage(const std::string& messageId, Day day) {
  return !messageId.empty() && (marks_.of(day).messageIds.contains(messageId) ||
                                marks_.of(day.plusDays(-1)).messageIds.contains(messageId));
}

bool FeishuMemoWriter::knowsBody(std::string_view body, Day day) {
  return marks_.of(day).bodies.contains(std::string(trimSpaceAndBreaks(body)));
}

bool FeishuMemoWriter::isDuplicateMessageId(const std::string& messageId, Day day) {
  try {
    return memos_.context().write([&] { return knowsMessage(messageId, day); });
  } catch (const Error&) {
    return false;  // the write that follows says why
  }
}

bool FeishuMemoWriter::isDuplicateBody(std::string_view body, Day day) {
  try {
    return memos_.context().write([&] { return knowsBody(body, day); });
  } catch (const Error&) {
    return false;
  }
}

FeishuMemoWriter::WriteResult FeishuMemoWriter::writeMemo(const Content& content) {
  WriteResult result = write(content, SameBody::isDuplicate);
  if (result.kind == Kind::success)
    Log::information(LogChannel::feishu, "已记录 seq={}", result.place->seqNumber);
  return result;
}

FeishuMemoWriter::WriteResult FeishuMemoWriter::writeMemoWithAttachments(const Content& content) {
  WriteResult result = write(content, SameBody::isAnother);
  if (result.kind == Kind::success)
    Log::information(LogChannel::feishu, "已记录 seq={} attachments={}", result.place->seqNumber,
                     content.files.size());
  return result;
}

FeishuMemoWriter::WriteResult FeishuMemoWriter::write(const Content& content, SameBody sameBody) {
  const Day day = Day::of(content.date);
  try {
    return memos_.context().write([&]() -> WriteResult {
      if (knowsMessage(content.messageId, day) ||
          (sameBody == SameBody::isDuplicate && knowsBody(content.body, day)))
        return {.kind = Kind::duplicate};
      return {.place = create(content, day)};
    });
  } catch (const AttachmentManager::ImportError& error) {
    return {.kind = Kind::attachmentFailed, .reason = error.what()};
  } catch (const Error& error) {
    return {.kind = Kind::failure, .reason = error.what()};
  }
}

MemoPlace FeishuMemoWriter::create(const Content& content, Day day) {
  DayStore::NewMemo memo{.body = content.body,
                         .tags = resolveTags(content.body, content.messageId),
                         .time = DateFormatters::timeOnly.format(content.date),
                         .source = FeishuDayMarks::source,
                         .made = content.date};
  if (!content.messageId.empty()) {
    memo.sourceId = content.messageId;
    // The platform may give one message to the bots of two machines.
    memo.memoId = memos_.identityFor(day, "message", {content.messageId});
  }
  const std::int64_t highest = marks_.of(day).highest;
  if (highest > 0 && highest < std::numeric_limits<std::int64_t>::max())
    memo.nextNumber = highest + 1;
  try {
    const Memo written = memos_.receive(day, std::move(memo), content.files);
    marks_.add(written, day);
    return {day, written.seqNumber};
  } catch (...) {
    marks_.forget(day);
    throw;
  }
}

}  // namespace nomely
