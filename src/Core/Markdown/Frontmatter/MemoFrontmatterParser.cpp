#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"

#include <optional>

#include <fmt/format.h>

#include "Core/Markdown/Frontmatter/HeaderKeys.h"
#include "Core/Markdown/Frontmatter/MemoFileParts.h"
#include "Core/Markdown/Frontmatter/YamlError.h"
#include "Core/Markdown/Frontmatter/YamlEvents.h"
#include "Platform/Text/LineEnds.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

using Kind = ParseError::Kind;

MemoFrontmatter decode(std::string_view header) {
  return HeaderKeys::decode(YamlDocument(header).root());
}

std::string describe(const YamlError& error) {
  // The first line of the file is the fence.
  return error.line() == 0
             ? fmt::format("文件头有误：{}", error.what())
             : fmt::format("文件头有误，第 {} 行：{}", error.line() + 1, error.what());
}

std::string describeLineEnds(std::string_view content) {
  const bool isMarked = content.starts_with(byteOrderMark);
  const std::string_view ends =
      content.find("\r\n") != std::string_view::npos ? "换行是 CRLF 而不是 LF"
      : content.find('\r') != std::string_view::npos ? "换行是 CR 而不是 LF"
                                                     : "";
  return fmt::format("{}{}{}", isMarked ? "文件开头有 BOM 标记" : "",
                     isMarked && !ends.empty() ? "，" : "", ends);
}

// Why `content` has no parts. Line ends are named when they are the reason.
std::string describeMissingParts(std::string_view content) {
  if (trimSpaceAndBreaks(content).empty()) return "文件是空的，请从历史版本恢复或删除它";
  const std::string plain = withLineFeeds(content);
  const auto parts = MemoFileParts::of(plain);
  if (const auto* found = std::get_if<MemoFileParts>(&parts)) {
    try {
      (void)decode(found->header);
      return fmt::format("{}，读不出文件头，请运行 nomely doctor --fix 修复",
                         describeLineEnds(content));
    } catch (const YamlError& error) {
      return fmt::format("{}；改好后再运行 nomely doctor --fix，因为{}", describe(error),
                         describeLineEnds(content));
    }
  }
  if (std::get<Kind>(parts) == Kind::unclosedFrontmatter)
    return "文件头没有结束，请在它的最后一行之后加一行 ---";
  return "没有文件头（第一行应当是 ---），请运行 nomely doctor --fix 补上";
}

MemoFileParts partsOf(std::string_view content) {
  const auto parts = MemoFileParts::of(content);
  if (const auto* kind = std::get_if<Kind>(&parts))
    throw ParseError(*kind, describeMissingParts(content));
  return std::get<MemoFileParts>(parts);
}

MemoFrontmatter decodeFile(const MemoFileParts& parts) {
  try {
    return decode(parts.header);
  } catch (const YamlError& error) {
    throw ParseError(Kind::yamlDecode, describe(error), error.problem());
  }
}

}  // namespace

MemoFrontmatterParser::ParsedMemo MemoFrontmatterParser::parse(std::string_view content) {
  const MemoFileParts parts = partsOf(content);
  return {decodeFile(parts), std::string(bodyAsRead(parts.body))};
}

MemoFrontmatter MemoFrontmatterParser::parseHeader(std::string_view content) {
  return decodeFile(partsOf(content));
}

std::string MemoFrontmatterParser::serialize(const MemoFrontmatter& frontmatter,
                                             std::string_view body) {
  std::string header = HeaderKeys::encode(frontmatter, YamlWriter::Layout::folded);
  // A value of several lines, or a folded one, can leave a line that would end the header.
  if (MemoFileParts::holdsFence(header))
    header = HeaderKeys::encode(frontmatter, YamlWriter::Layout::singleLine);
  constexpr std::string_view fence = MemoFileParts::fence;
  std::string content;
  content.reserve(header.size() + body.size() + 16);
  content.append(fence).append("\n").append(header).append(fence).append("\n\n").append(body);
  return content;
}

std::string_view MemoFrontmatterParser::bodyAsRead(std::string_view body) {
  while (!body.empty()) {
    std::string_view next = body;
    if (!trimHorizontal(takeLine(next)).empty()) break;
    body = next;
  }
  return body;
}

bool MemoFrontmatterParser::mayEscape(std::string_view content) {
  const auto escapes = [](std::string_view text) {
    if (text.find('\\') != std::string_view::npos) return true;
    std::size_t quote = text.find('\'');
    while (quote < text.size() - 1 && text[quote + 1] != '\'') quote = text.find('\'', quote + 1);
    return quote < text.size() - 1;
  };
  // Most files have neither in their bodies, and finding out where that begins takes longer.
  if (content.empty() || !escapes(content)) return false;
  const auto parts = MemoFileParts::of(content);
  const auto* found = std::get_if<MemoFileParts>(&parts);
  return found == nullptr || (!found->header.empty() && escapes(found->header));
}

bool MemoFrontmatterParser::losesOnRewrite(std::string_view content) {
  const auto parts = MemoFileParts::of(content);
  const auto* found = std::get_if<MemoFileParts>(&parts);
  if (found == nullptr) return false;
  try {
    const YamlDocument document(found->header);
    (void)HeaderKeys::decode(document.root());
    return HeaderKeys::holdsOthers(document.root()) || holdsMoreThanValues(found->header);
  } catch (const YamlError&) {
    return false;
  }
}

}  // namespace nomely
