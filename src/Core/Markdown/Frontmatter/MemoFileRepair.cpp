#include "Core/Markdown/Frontmatter/MemoFileRepair.h"

#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Platform/Text/LineEnds.h"
#include "Platform/Text/Replacing.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

// Absent when it can be read.
std::optional<ParseError::Kind> faultOf(std::string_view content) {
  try {
    (void)MemoFrontmatterParser::parse(content);
    return std::nullopt;
  } catch (const ParseError& error) {
    return error.kind();
  }
}

// The kind of line ends that is to become line feeds. A lone carriage return ends lines only where
// nothing else does: elsewhere it is part of a line.
std::string_view foreignLineEnd(std::string_view text) {
  if (text.find("\r\n") != std::string_view::npos) return "\r\n";
  const bool endsLines = text.find('\n') == std::string_view::npos;
  return endsLines && text.find('\r') != std::string_view::npos ? "\r" : "";
}

}  // namespace

std::optional<MendedFile> MemoFileRepair::mended(std::string_view content, std::string_view time) {
  if (!isValidUtf8(content) || trimSpaceAndBreaks(content).empty()) return std::nullopt;
  auto fault = faultOf(content);
  if (!fault) return std::nullopt;
  MendedFile file{std::string(withoutByteOrderMark(content)), {}};
  const auto note = [&](std::string mend) {
    file.mends.push_back(std::move(mend));
    fault = faultOf(file.content);
  };
  if (file.content.size() != content.size()) note("去掉 BOM 标记");
  if (const std::string_view end = foreignLineEnd(file.content); fault && !end.empty()) {
    file.content = replacingAll(file.content, end, "\n");
    note(end == "\r" ? "换行 CR → LF" : "换行 CRLF → LF");
  }
  if (fault != ParseError::Kind::missingFrontmatter) {
    if (fault) return std::nullopt;
    return file;
  }
  const std::string_view text = MemoFrontmatterParser::bodyAsRead(file.content);
  if (!faultOf(text)) {
    file.content = std::string(text);
    note("去掉文件头之上的空行");
    return file;
  }
  MemoFrontmatter header;
  header.time = time;
  file.content = MemoFrontmatterParser::serialize(header, file.content);
  note("补上文件头");
  return file;
}

}  // namespace nomely
