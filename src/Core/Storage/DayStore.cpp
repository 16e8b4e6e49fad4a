#include "Core/Storage/DayStore.h"

#include <algorithm>
#include <functional>
#include <limits>

#include "Core/Extensions/DateFormatters.h"
#include "Core/Extensions/PathNames.h"
#include "Core/Storage/AttachmentManager.h"
#include "Core/Storage/MemoStamp.h"
#include "Core/Storage/MemoUpgrade.h"
#include "Core/Storage/VersionStore.h"
#include "Core/Storage/WriteError.h"
#include "Platform/Concurrency/NotificationCenter.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

constexpr std::int64_t highestNumber = std::numeric_limits<std::int64_t>::max();

void logFailure(std::string_view operation, const Error& error) {
  Log::error(LogChannel::storage, "⚠️ DayStore.{}: {}", operation, error.what());
}

// An error in the log, unless somebody tells the user.
void reportPassedOver(const std::filesystem::path& file, const Error& error) {
  const bool isTold = NotificationCenter::shared().post(
      Notifications::memoPassedOver, fmt::format("{}：{}", file.string(), error.what()));
  Log::write(LogChannel::storage, isTold ? LogLevel::information : LogLevel::error,
             fmt::format("⚠️ DayStore.listMemos: 跳过无法解析的 memo 文件 {}：{}",
                         file.filename().string(), error.what()));
}

}  // namespace

DayStore::DayStore(StoreContext context) : context_(std::move(context)), memoStore_(context_) {}

std::vector<std::int64_t> DayStore::listNumbers(Day day) const {
  const std::filesystem::path folder = context_.paths.dayFolder(day);
  if (!context_.files.exists(folder)) return {};
  return numbersIn(context_.files.listVisible(folder));
}

std::vector<std::int64_t> DayStore::numbersIn(const std::vector<DirectoryEntry>& folder) {
  std::vector<std::int64_t> numbers;
  for (const DirectoryEntry& entry : folder)
    if (const auto number = DiskPaths::seqNumber(entry.name); number && *number >= 1)
      numbers.push_back(*number);
  std::ranges::sort(numbers);
  // "7.md" beside "007.md" spells the same number.
  const auto [first, last] = std::ranges::unique(numbers);
  numbers.erase(first, last);
  return numbers;
}

std::vector<Memo> DayStore::listMemos(Day day) const {
  return readMemos(day, listNumbers(day));
}

std::vector<Memo> DayStore::readMemos(Day day, std::vector<std::int64_t> numbers) const {
  std::ranges::sort(numbers, std::greater());
  std::vector<Memo> memos;
  memos.reserve(numbers.size());
  for (const std::int64_t number : numbers) {
    try {
      if (auto memo = memoStore_.read(day, number)) memos.push_back(std::move(*memo));
    } catch (const Error& error) {
      reportPassedOver(context_.paths.memoFile(day, number), error);
    }
  }
  return memos;
}

std::int64_t DayStore::nextSeqNumber(Day day) const {
  const std::filesystem::path folder = context_.paths.dayFolder(day);
  std::int64_t highest = 0;
  try {
    if (!context_.files.exists(folder)) return 1;
    for (const DirectoryEntry& entry : context_.files.listVisible(folder))
      highest = std::max(highest, DiskPaths::seqNumber(entry.name).value_or(0));
  } catch (const FileError& error) {
    // A number that turns out to be taken is passed over when the memo is placed.
    logFailure("nextSeqNumber", error);
    return 1;
  }
  if (highest == highestNumber)
    throw FileError("编号", folder / DiskPaths::memoFileName(highest), EOVERFLOW);
  return highest + 1;
}

std::vector<Day> DayStore::namedDays() const {
  std::vector<Day> days;
  for (const DirectoryEntry& entry : context_.files.listVisible(context_.paths.rootURL))
    if (const auto day = Day::parse(entry.name)) days.push_back(*day);
  return days;
}

std::vector<Day> DayStore::dayFolders() const {
  std::vector<Day> days = namedDays();
  std::erase_if(
      days, [&](Day day) { return !context_.files.isDirectory(context_.paths.dayFolder(day)); });
  return days;
}

std::vector<Day> DayStore::listAllDates() const {
  if (!context_.files.exists(context_.paths.rootURL)) return {};
  std::vector<Day> days;
  for (const DirectoryEntry& entry : context_.files.listVisible(context_.paths.rootURL)) {
    const auto day = Day::parse(entry.name);
    if (!day) continue;
    try {
      const auto files = context_.files.listVisible(context_.paths.rootURL / entry.name);
      if (std::ranges::any_of(
              files, [](const DirectoryEntry& file) { return pathExtension(file.name) == "md"; }))
        days.push_back(*day);
    } catch (const FileError& error) {
      // A plain file under a day's name is nothing to report.
      if (error.kind() != FileError::Kind::notADirectory) logFailure("listAllDates", error);
    }
  }
  std::ranges::sort(days);
  return days;
}

template <typename Create>
void DayStore::place(Memo& memo, Day day, Create create) const {
  while (!create()) {
    if (memo.seqNumber == highestNumber)
      throw FileError("编号", context_.paths.memoFile(day, highestNumber), EOVERFLOW);
    ++memo.seqNumber;
  }
}

Memo DayStore::createMemo(Day day, NewMemo content) const {
  return context_.write([&] {
    Memo memo;
    memo.seqNumber = content.nextNumber ? *content.nextNumber : nextSeqNumber(day);
    memo.time = content.time ? std::move(*content.time) : Memo::currentTimeString(context_.clock);
    memo.body = std::move(content.body);
    memo.tags = std::move(content.tags);
    memo.mood = content.mood;
    memo.attachments = std::move(content.attachments);
    memo.source = std::move(content.source);
    memo.sourceId = std::move(content.sourceId);
    memo.originalNames = std::move(content.originalNames);
    memo.audioTranscripts = std::move(content.audioTranscripts);
    stampAsNew(memo, context_.clock);
    if (content.memoId) memo.memoId = std::move(content.memoId);
    if (content.made) memo.createdAt = memo.updatedAt = DateFormatters::timestamp(*content.made);
    place(memo, day, [&] { return memoStore_.create(memo, day); });
    return memo;
  });
}

Memo DayStore::createCopy(Day day, Memo memo) const {
  return context_.write([&] {
    memo.seqNumber = nextSeqNumber(day);
    memo.memoId = Memo::makeMemoId();
    memo.schemaVersion = MemoFrontmatter::currentSchemaVersion;
    place(memo, day, [&] { return memoStore_.create(memo, day); });
    return memo;
  });
}

void DayStore::updateMemo(const Memo& memo, Day day, const std::optional<Memo>& expected) const {
  context_.write([&] {
    validateUpdate(memo, day, expected);
    memoStore_.write(memo, day);
  });
}

void DayStore::commitMemo(const Memo& memo, Day day, const std::optional<Memo>& expected) const {
  context_.write([&] {
    // The gate keeps other writers of ours out, but not programs that synchronise the root.
    const auto former = context_.files.attributes(context_.paths.memoFile(day, memo.seqNumber),
                                                  LinkPolicy::noFollow);
    validateUpdate(memo, day, expected);
    VersionStore(context_).saveIfNeeded(day, memo.seqNumber, memo);
    if (!former) throw WriteError(WriteError::Kind::missingMemo);
    memoStore_.write(memo, day, *former);
  });
}

void DayStore::deleteMemo(Day day, const Memo& memo) const {
  context_.write([&] {
    memoStore_.validateUnchanged(memo, day);
    // The memo goes first: without its files it would be half a memo, and they without it are
    // merely in nobody's way.
    memoStore_.remove(day, memo.seqNumber);
    for (const std::string& name : memo.attachments) {
      if (!AttachmentManager::isSafeName(name)) continue;
      try {
        context_.files.removeFile(context_.paths.dayFolder(day) / name);
      } catch (const FileError& error) {
        logFailure("deleteMemo", error);
      }
    }
  });
}

void DayStore::withdraw(const Memo& moved, Day to, const std::filesystem::path& oldFile) const {
  try {
    // The old file may be gone although its removal failed: then the new one is the memo.
    if (context_.files.exists(oldFile)) memoStore_.remove(to, moved.seqNumber);
  } catch (const Error& error) {
    logFailure("moveMemo", error);
  }
}

std::optional<std::set<std::string>> DayStore::filesNamed(Day day) const {
  std::set<std::string> names;
  for (const std::int64_t number : listNumbers(day)) {
    try {
      const std::optional<Memo> memo = memoStore_.read(day, number);
      if (!memo) return std::nullopt;  // "7.md" is listed, but we read "007.md"
      names.insert(memo->attachments.begin(), memo->attachments.end());
    } catch (const Error& error) {
      logFailure("filesNamed", error);
      return std::nullopt;
    }
  }
  return names;
}

void DayStore::trashUnnamedFiles(const std::vector<std::string>& names, Day day) const {
  const auto named = filesNamed(day);
  if (!named) return;
  for (const std::string& name : names) {
    if (named->contains(name)) continue;
    try {
      AttachmentManager(context_).deleteFile(name, day);
    } catch (const FileError& error) {
      logFailure("trashUnnamedFiles", error);
    }
  }
}

// The clock of the machine that wrote the former file may be ahead of this one's.
void DayStore::dateAfter(Moment former, const std::filesystem::path& file) const {
  if (context_.clock.now() > former + distinctTimes) return;
  try {
    if (const auto opened = context_.files.fileSystem().open(file, FileSystem::OpenMode::append,
                                                             LinkPolicy::noFollow))
      opened->setModified(former + distinctTimes + std::chrono::seconds(1));
  } catch (const FileError& error) {
    logFailure("moveMemo", error);
  }
}

Memo DayStore::moveMemo(const Memo& memo, Day from, Day to) const {
  return context_.write([&] {
    const Memo current = memoStore_.validateUnchanged(memo, from);
    const std::filesystem::path file = context_.paths.memoFile(from, memo.seqNumber);
    const auto attributes = context_.files.attributes(file);
    const auto content = context_.files.read(file);
    if (!attributes || !content) throw WriteError(WriteError::Kind::missingMemo);
    Memo moved = memo;
    MemoUpgrade::carryInto(moved, current);
    moved.seqNumber = nextSeqNumber(to);
    const AttachmentManager attachments(context_);
    attachments.preparePendingAttachments(memo.attachments,
                                          {.fallbackDate = from, .destinationDate = to});
    place(moved, to,
          [&] { return memoStore_.createAs(moved, to, *content, attributes->permissions); });
    dateAfter(attributes->modified, context_.paths.memoFile(to, moved.seqNumber));
    try {
      if (context_.files.read(file) != content) throw WriteError(WriteError::Kind::conflict);
      memoStore_.remove(from, memo.seqNumber);
    } catch (...) {
      withdraw(moved, to, file);
      throw;
    }
    trashUnnamedFiles(moved.attachments, from);
    return moved;
  });
}

}  // namespace nomely
