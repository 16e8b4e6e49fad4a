#include "Core/Storage/MemoStore.h"

#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Storage/MemoFile.h"
#include "Core/Storage/MemoUpgrade.h"
#include "Core/Storage/WriteError.h"
#include "Platform/Files/FileError.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

Memo asRead(Memo memo) {
  memo.body = std::string(MemoFrontmatterParser::bodyAsRead(memo.body));
  return memo;
}

}  // namespace

std::filesystem::path MemoStore::fileOf(const Memo& memo, Day day) const {
  return context_.paths.memoFile(day, memo.seqNumber);
}

template <typename Step>
decltype(auto) MemoStore::changing(Step step) const {
  try {
    return step();
  } catch (const FileError& error) {
    if (error.kind() != FileError::Kind::alreadyExists)
      context_.gate.changes().announceManyChanged();
    throw;
  } catch (...) {
    context_.gate.changes().announceManyChanged();
    throw;
  }
}

std::optional<Memo> MemoStore::read(Day day, std::int64_t seqNumber) const {
  return MemoFile::read(context_.files, context_.paths.memoFile(day, seqNumber), seqNumber);
}

void MemoStore::write(const Memo& memo, Day day) const {
  context_.write([&] {
    const Memo stored = asRead(memo);
    writeAs(stored, day, MemoFile::contentOf(stored));
  });
}

void MemoStore::write(const Memo& memo, Day day, const FileAttributes& former) const {
  context_.write([&] {
    const Memo stored = asRead(memo);
    context_.prepareFolder(context_.paths.dayFolder(day));
    const bool isWritten = changing([&] {
      return context_.files.replaceAtomically(fileOf(memo, day), MemoFile::contentOf(stored),
                                              former);
    });
    if (!isWritten) throw WriteError(WriteError::Kind::conflict);
    context_.gate.changes().announceWritten(stored, day);
  });
}

void MemoStore::writeAs(const Memo& memo, Day day, std::string_view content) const {
  context_.write([&] {
    context_.prepareFolder(context_.paths.dayFolder(day));
    changing([&] { context_.files.writeAtomically(fileOf(memo, day), content); });
    context_.gate.changes().announceWritten(memo, day);
  });
}

bool MemoStore::create(const Memo& memo, Day day) const {
  return context_.write([&] {
    const Memo stored = asRead(memo);
    return createAs(stored, day, MemoFile::contentOf(stored), std::nullopt);
  });
}

bool MemoStore::createAs(const Memo& memo, Day day, std::string_view content,
                         std::optional<unsigned> permissions) const {
  return context_.write([&] {
    context_.prepareFolder(context_.paths.dayFolder(day));
    const auto file = fileOf(memo, day);
    if (!changing([&] { return context_.files.createAtomically(file, content, permissions); }))
      return false;
    context_.gate.changes().announceWritten(memo, day);
    return true;
  });
}

void MemoStore::remove(Day day, std::int64_t seqNumber) const {
  context_.write([&] {
    changing([&] { return context_.files.removeFile(context_.paths.memoFile(day, seqNumber)); });
    context_.gate.changes().announceRemoved(day, seqNumber);
  });
}

void MemoStore::moveOut(Day day, std::int64_t seqNumber, const std::filesystem::path& to) const {
  changing([&] { context_.files.moveFile(context_.paths.memoFile(day, seqNumber), to); });
  context_.gate.changes().announceRemoved(day, seqNumber);
}

void MemoStore::moveIn(const std::filesystem::path& from, Day day, std::int64_t seqNumber) const {
  changing([&] { context_.files.moveFile(from, context_.paths.memoFile(day, seqNumber)); });
  try {
    if (const auto memo = read(day, seqNumber)) context_.gate.changes().announceWritten(*memo, day);
  } catch (const Error&) {
    // A file that can't be read is in no list.
  }
}

Memo MemoStore::validateUpdate(const Memo& memo, Day day,
                               const std::optional<Memo>& expected) const {
  std::optional<Memo> current = read(day, memo.seqNumber);
  if (!current) throw WriteError(WriteError::Kind::missingMemo);
  if (current->memoId && current->memoId != memo.memoId)
    throw WriteError(WriteError::Kind::identityChanged);
  if (expected && *current != *expected) throw WriteError(WriteError::Kind::conflict);
  return *std::move(current);
}

Memo MemoStore::validateUnchanged(const Memo& memo, Day day) const {
  if (MemoUpgrade::isDue(memo)) {
    std::optional<Memo> upgraded = read(day, memo.seqNumber);
    if (upgraded && MemoUpgrade::isOf(*upgraded, memo)) return *std::move(upgraded);
  }
  Memo current = validateUpdate(memo, day, std::nullopt);
  if (!isStoredAs(current, memo)) throw WriteError(WriteError::Kind::conflict);
  return current;
}

Memo MemoStore::parseMemoFile(std::string_view content, std::int64_t seqNumber,
                              const Clock& clock) {
  try {
    if (isValidUtf8(content)) return MemoFile::parsed(content, seqNumber);
  } catch (const ParseError&) {
  }
  return Memo::empty(seqNumber, clock);
}

}  // namespace nomely
