#include "Core/Storage/MemoStore.h"

#include <fmt/format.h>

#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Markdown/Frontmatter/YamlError.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

Memo memoFrom(MemoFrontmatterParser::ParsedMemo parsed, std::int64_t seqNumber) {
  Memo memo;
  static_cast<MemoFrontmatter&>(memo) = std::move(parsed.frontmatter);
  memo.seqNumber = seqNumber;
  memo.body = std::move(parsed.body);
  return memo;
}

}  // namespace

EncodingError::EncodingError(const std::filesystem::path& file)
    : Error("memo.encoding", fmt::format("文件不是有效的 UTF-8 文本：{}", file.string())) {}

MemoStore::MemoStore(StoreContext context)
    : context_(std::move(context)), writes_(DataWriteCoordinator::shared(context_.paths.rootURL)) {}

std::optional<Memo> MemoStore::read(Day day, std::int64_t seqNumber) const {
  const std::filesystem::path file = context_.paths.memoFile(day, seqNumber);
  const std::optional<std::string> content = context_.files.read(file);
  if (!content) return std::nullopt;
  if (!isValidUtf8(*content)) throw EncodingError(file);
  return memoFrom(MemoFrontmatterParser::parse(*content), seqNumber);
}

void MemoStore::write(const Memo& memo, Day day) const {
  writes_.write([&] {
    const std::string content = contentOf(memo);
    writes_.prepareFolder(context_.paths.dayFolder(day), context_.files);
    context_.files.writeAtomically(context_.paths.memoFile(day, memo.seqNumber), content);
  });
}

bool MemoStore::create(const Memo& memo, Day day) const {
  return writes_.write([&] {
    const std::string content = contentOf(memo);
    writes_.prepareFolder(context_.paths.dayFolder(day), context_.files);
    return context_.files.createAtomically(context_.paths.memoFile(day, memo.seqNumber), content);
  });
}

void MemoStore::remove(Day day, std::int64_t seqNumber) const {
  writes_.write([&] { context_.files.removeFile(context_.paths.memoFile(day, seqNumber)); });
}

Memo MemoStore::parseMemoFile(std::string_view content, std::int64_t seqNumber,
                              const Clock& clock) {
  try {
    if (isValidUtf8(content)) return memoFrom(MemoFrontmatterParser::parse(content), seqNumber);
  } catch (const ParseError&) {
  }
  return Memo::empty(seqNumber, clock);
}

std::string MemoStore::contentOf(const Memo& memo) {
  // What could not be read again must not replace what can.
  if (!isValidUtf8(memo.body)) throw YamlError("正文不是有效的 UTF-8 文本");
  return MemoFrontmatterParser::serialize(memo, memo.body);
}

}  // namespace nomely
