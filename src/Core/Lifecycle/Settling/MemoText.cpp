#include "Core/Lifecycle/Settling/MemoText.h"

#include <tuple>
#include <utility>

#include "Core/Extensions/DateFormatters.h"
#include "Core/Markdown/Frontmatter/MemoFileRepair.h"
#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Storage/MemoFile.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

std::optional<Memo> parsed(const std::string& bytes) {
  try {
    return MemoFile::parsed(bytes, 0);
  } catch (const ParseError&) {
    return std::nullopt;
  }
}

std::optional<Moment> momentOf(const std::optional<std::string>& text) {
  return text ? DateFormatters::parseTimestamp(*text) : std::nullopt;
}

}  // namespace

std::optional<MemoText> MemoText::read(std::string bytes, unsigned permissions,
                                       const std::string& fallbackTime) {
  if (!isValidUtf8(bytes)) return std::nullopt;
  if (auto memo = parsed(bytes))
    return MemoText{std::move(bytes), *std::move(memo), permissions, {}};
  auto mended = MemoFileRepair::mended(bytes, fallbackTime);
  if (!mended) return std::nullopt;
  Memo memo = MemoFile::parsed(mended->content, 0);
  return MemoText{std::move(mended->content), std::move(memo), permissions, std::move(bytes)};
}

void MemoText::setId(const std::string& memoId) {
  if (found.empty() && MemoFrontmatterParser::losesOnRewrite(bytes)) found = bytes;
  memo.memoId = memoId;
  bytes = MemoFile::contentOf(memo);
}

Moment MemoText::written() const {
  return momentOf(memo.updatedAt).value_or(momentOf(memo.createdAt).value_or(Moment()));
}

bool MemoText::staysBefore(const MemoText& other) const {
  return std::tuple(momentOf(memo.updatedAt), std::string_view(bytes)) >
         std::tuple(momentOf(other.memo.updatedAt), std::string_view(other.bytes));
}

bool MemoText::isLaterThan(const MemoText& other) const {
  return momentOf(memo.updatedAt) > momentOf(other.memo.updatedAt);
}

bool MemoText::isIn(const MemoText& other) const {
  return bytes == other.bytes ||
         (isStoredAs(memo, other.memo) && !MemoFrontmatterParser::losesOnRewrite(bytes));
}

bool MemoText::showsAs(const MemoText& other) const {
  return memo.body == other.memo.body && memo.time == other.memo.time &&
         memo.tags == other.memo.tags && memo.attachments == other.memo.attachments;
}

}  // namespace nomely
