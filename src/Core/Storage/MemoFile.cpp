#include "Core/Storage/MemoFile.h"

#include <fmt/format.h>

#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Markdown/Frontmatter/YamlError.h"
#include "Platform/Text/Unicode.h"

namespace nomely {

EncodingError::EncodingError(const std::filesystem::path& file)
    : Error("memo.encoding",
            fmt::format("文件不是有效的 UTF-8 文本，请用编辑器转换编码后再试：{}", file.string())) {
}

std::optional<std::string> MemoFile::text(const FileManager& files,
                                          const std::filesystem::path& file) {
  std::optional<std::string> content = files.read(file, maxSize);
  if (content && !isValidUtf8(*content)) throw EncodingError(file);
  return content;
}

Memo MemoFile::parsed(std::string_view text, std::int64_t seqNumber) {
  MemoFrontmatterParser::ParsedMemo parsed = MemoFrontmatterParser::parse(text);
  return {std::move(parsed.frontmatter), Uuid::random(), seqNumber, std::move(parsed.body)};
}

std::optional<Memo> MemoFile::read(const FileManager& files, const std::filesystem::path& file,
                                   std::int64_t seqNumber) {
  const std::optional<std::string> content = text(files, file);
  return content ? std::optional(parsed(*content, seqNumber)) : std::nullopt;
}

std::string MemoFile::contentOf(const Memo& memo) {
  if (!isValidUtf8(memo.body)) throw YamlError("正文不是有效的 UTF-8 文本");
  std::string content = MemoFrontmatterParser::serialize(memo, memo.body);
  if (content.size() > maxSize) throw YamlError("笔记超过 64 MiB，请分成几条保存");
  return content;
}

}  // namespace nomely
