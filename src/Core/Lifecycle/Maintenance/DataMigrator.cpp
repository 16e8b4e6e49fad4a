#include "Core/Lifecycle/Maintenance/DataMigrator.h"

#include <algorithm>
#include <cerrno>

#include <fmt/format.h>

#include "Core/Extensions/PathNames.h"
#include "Core/Lifecycle/Maintenance/MemoSchemaMigration.h"
#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Service/MemoService.h"
#include "Core/Storage/AttachmentManager.h"
#include "Core/Storage/MaintenanceWork.h"
#include "Core/Storage/MemoFile.h"
#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"
#include "Platform/Text/PercentEncoding.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

// A text that can't become memos.
class MigrationError : public Error {
 public:
  MigrationError(const std::filesystem::path& file, std::string_view why)
      : Error("migrate", fmt::format("{} {}", file.string(), why)) {}
};

bool isNumber(std::string_view name, std::size_t digits) {
  return name.size() == digits && name.find_first_not_of("0123456789") == std::string_view::npos;
}

// Not as a part of a longer name: "1.jpg" is not in "11.jpg".
bool saysName(std::string_view text, std::string_view name) {
  const auto isPart = [](char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
           c == '-' || c == '%';
  };
  for (std::size_t at = text.find(name); at != std::string_view::npos;
       at = text.find(name, at + 1)) {
    const std::size_t end = at + name.size();
    if ((at == 0 || !isPart(text[at - 1])) && (end == text.size() || !isPart(text[end])))
      return true;
  }
  return false;
}

}  // namespace

std::filesystem::path DataMigrator::textOf(Day day) {
  const std::string name = day.string();  // "yyyy-MM-dd"
  return std::filesystem::path(name.substr(0, 4)) / name.substr(5, 2) / (name.substr(8) + ".md");
}

std::filesystem::path DataMigrator::asideFolder() const {
  return context_.paths.rootURL / ".migrating";
}

std::filesystem::path DataMigrator::mediaFolder(Day day) const {
  return (context_.paths.rootURL / textOf(day)).replace_extension();
}

std::vector<Day> DataMigrator::oldDates() const {
  const FileManager& files = context_.files;
  const std::filesystem::path& root = context_.paths.rootURL;
  std::vector<Day> days;
  const auto isFolder = [&](const DirectoryEntry& entry, std::size_t digits) {
    return entry.type == FileType::directory && isNumber(entry.name, digits);
  };
  for (const DirectoryEntry& year : files.listVisible(root)) {
    if (!isFolder(year, 4)) continue;
    for (const DirectoryEntry& month : files.listVisible(root / year.name)) {
      if (!isFolder(month, 2)) continue;
      for (const DirectoryEntry& file : files.listVisible(root / year.name / month.name)) {
        if (file.type != FileType::regular || pathExtension(file.name) != "md") continue;
        const auto day =
            Day::parse(fmt::format("{}-{}-{}", year.name, month.name, withoutExtension(file.name)));
        if (day) days.push_back(*day);
      }
    }
  }
  return days;
}

DataMigrator::MigrationResult DataMigrator::migrate(const std::stop_token& stop) const {
  MigrationResult result;
  const FileManager& files = context_.files;
  discardAside();
  for (const Day day : oldDates()) {
    throwIfStopped(stop);
    if (files.exists(context_.paths.dayFolder(day))) continue;
    try {
      const std::size_t memos = context_.write([&] { return migrateDay(day); });
      result.days += memos > 0 ? 1 : 0;
      result.memos += memos;
    } catch (const Error& error) {
      if (MaintenanceWork::concernsWholeRoot(error)) throw;
      result.errors.push_back(fmt::format("迁移 {} 失败: {}", day.string(), error.what()));
    }
  }
  discardAside();
  return result;
}

void DataMigrator::discardAside() const {
  if (context_.files.exists(asideFolder()))
    context_.write([&] { context_.files.removeTree(asideFolder()); });
}

std::size_t DataMigrator::migrateDay(Day day) const {
  const std::filesystem::path target = context_.paths.dayFolder(day);
  const std::filesystem::path file = context_.paths.rootURL / textOf(day);
  const auto text =
      context_.files.exists(target) ? std::nullopt : context_.files.read(file, MemoFile::maxSize);
  if (!text) return 0;
  if (!isValidUtf8(*text)) throw MigrationError(file, "不是有效的 UTF-8 文本，请用编辑器转换编码");
  const std::vector<Media> media = mediaOf(day);
  const std::vector<Memo> memos = memosOf(day, LegacyDay::parse(*text), media);
  if (memos.empty()) return 0;
  const std::filesystem::path built = asideFolder() / day.string();
  context_.files.removeTree(built);
  build(built, day, memos, media);
  place(built, target);
  return memos.size();
}

std::vector<DataMigrator::Media> DataMigrator::mediaOf(Day day) const {
  const std::filesystem::path folder = mediaFolder(day);
  std::vector<Media> media;
  if (!context_.files.isDirectory(folder)) return media;
  for (const DirectoryEntry& entry : context_.files.listVisible(folder)) {
    if (entry.type != FileType::regular) {
      Log::error(LogChannel::storage, "⚠️ DataMigrator: {} 不是普通文件，没有迁移",
                 (folder / entry.name).string());
      continue;
    }
    const bool mayStay = isValidUtf8(entry.name) && AttachmentManager::isSafeName(entry.name);
    media.push_back({entry.name, mayStay ? entry.name
                                         : AttachmentManager::freshName(lowerCaseExtension(
                                               AttachmentManager::readableName(entry.name)))});
  }
  return media;
}

std::vector<Memo> DataMigrator::memosOf(Day day, LegacyDay old,
                                        const std::vector<Media>& media) const {
  if (old.sections.empty() && !media.empty()) old.sections.push_back({});
  std::vector<Memo> memos;
  memos.reserve(old.sections.size());
  for (LegacyDay::Section& section : old.sections) {
    Memo& memo = memos.emplace_back();
    memo.seqNumber = static_cast<std::int64_t>(memos.size());
    memo.schemaVersion = MemoFrontmatter::currentSchemaVersion;
    memo.source = MemoService::typedHere;
    memo.sourceId = textOf(day).string();
    memo.memoId =
        DerivedIdentity::memoId("oldest layout", {*memo.sourceId, std::to_string(memo.seqNumber)});
    memo.time = section.time ? *std::move(section.time) : Memo::currentTimeString(context_.clock);
    memo.createdAt = IdentityBackfillMigration::legacyTimestamp(day, memo.time);
    memo.updatedAt = memo.createdAt;
    memo.tags = old.tags;
    memo.mood = old.mood;
    memo.body = std::move(section.body);
  }
  for (const auto& [name, newName] : media) {
    const auto namer = std::ranges::find_if(memos, [&](const Memo& memo) {
      return saysName(memo.body, name) || saysName(memo.body, percentEncoded(name));
    });
    Memo& memo = namer == memos.end() ? memos.front() : *namer;
    memo.attachments.push_back(newName);
    if (newName != name) memo.originalNames[newName] = AttachmentManager::readableName(name);
  }
  return memos;
}

void DataMigrator::build(const std::filesystem::path& folder, Day day,
                         const std::vector<Memo>& memos, const std::vector<Media>& media) const {
  const FileManager& files = context_.files;
  files.createDirectories(folder);
  for (const Memo& memo : memos) {
    const std::string content = MemoFrontmatterParser::serialize(memo.frontmatter(), memo.body);
    if (content.size() > MemoFile::maxSize) throw MigrationError(textOf(day), "超过 64 MiB");
    (void)files.createAtomically(folder / DiskPaths::memoFileName(memo.seqNumber), content);
  }
  for (const auto& [name, newName] : media)
    files.copyFile(mediaFolder(day) / name, folder / newName, LinkPolicy::noFollow);
}

void DataMigrator::place(const std::filesystem::path& built,
                         const std::filesystem::path& target) const {
  struct Announcement {
    MemoChanges& changes;
    ~Announcement() { changes.announceManyChanged(); }
  } const announcement{context_.gate.changes()};
  try {
    // Where another program makes the day at this moment, its day stays.
    context_.files.moveFile(built, target);
  } catch (const FileError& error) {
    if (error.errorNumber() != EPERM) throw;
    // The file system knows no rename that never replaces; one of folders replaces only empty ones.
    FileSystem& system = context_.files.fileSystem();
    system.rename(built, target, Replacement::allow);
    system.syncDirectory(context_.paths.rootURL);
  }
}

std::vector<Day> DataMigrator::leftOut() const {
  std::vector<Day> days;
  if (!context_.files.exists(context_.paths.rootURL)) return days;
  for (const Day day : oldDates())
    if (context_.files.exists(context_.paths.dayFolder(day)) && !isMigrated(day))
      days.push_back(day);
  return days;
}

bool DataMigrator::isMigrated(Day day) const {
  const std::string wanted = textOf(day).string();
  return std::ranges::any_of(days_.listNumbers(day), [&](std::int64_t number) {
    try {
      const auto memo = days_.memoStore().read(day, number);
      return memo && memo->sourceId == wanted;
    } catch (const Error&) {
      return false;
    }
  });
}

}  // namespace nomely
