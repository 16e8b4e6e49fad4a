#include <algorithm>
#include <charconv>
#include <functional>

#include "Core/Extensions/PathNames.h"
#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Storage/MemoFile.h"
#include "Core/Storage/VersionStore.h"
#include "Core/Storage/WriteError.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

constexpr auto identitiesFolder = "by-id";

// A folder that can't be listed counts as empty.
std::vector<DirectoryEntry> entriesOf(const FileManager& files,
                                      const std::filesystem::path& folder) {
  try {
    return files.listAll(folder);
  } catch (const FileError&) {
    return {};
  }
}

// What identityDirectory made a folder name of.
std::optional<std::string> identityNamed(std::string_view folder) {
  if (folder.empty() || folder.size() % 2 != 0) return std::nullopt;
  std::string identity;
  for (std::size_t i = 0; i < folder.size(); i += 2) {
    unsigned byte = 0;
    const char* const end = folder.data() + i + 2;
    const auto [stop, error] = std::from_chars(folder.data() + i, end, byte, 16);
    if (error != std::errc() || stop != end) return std::nullopt;
    identity += static_cast<char>(byte);
  }
  return identity;
}

}  // namespace

MissingAttachmentError::MissingAttachmentError(const std::string& name)
    : Error("version.attachmentMissing", "此历史版本的附件已缺失，未替换当前笔记：" + name) {}

std::optional<Moment> VersionStore::timestampOf(std::string_view fileName) {
  const std::string_view stem = withoutExtension(fileName);
  const std::string_view digits = stem.substr(0, stem.find('_'));
  double seconds = 0;
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, seconds);
  constexpr double latest = 253402300800;  // the year 10000
  if (error != std::errc() || stop != end || !(seconds >= 0 && seconds < latest))
    return std::nullopt;
  // Rounded, or a name would tell a microsecond less than the one it was made from.
  return Moment(std::chrono::round<Moment::duration>(std::chrono::duration<double>(seconds)));
}

std::optional<std::string> VersionStore::identityOf(
    Day day, std::int64_t seqNumber, const std::optional<std::string>& memoId) const {
  if (memoId) return memoId->empty() ? std::nullopt : memoId;
  const std::optional<Memo> memo = memoStore_.read(day, seqNumber);
  return memo && memo->memoId && !memo->memoId->empty() ? memo->memoId : std::nullopt;
}

std::optional<VersionEntry> VersionStore::entryOf(const std::filesystem::path& file,
                                                  std::int64_t seqNumber,
                                                  std::string_view memoId) const {
  const auto timestamp = timestampOf(file.filename().native());
  if (!timestamp) return std::nullopt;
  try {
    std::optional<Memo> memo = MemoFile::read(context_.files, file, seqNumber);
    if (!memo || memo->memoId != memoId) return std::nullopt;
    return VersionEntry{
        .timestamp = *timestamp,
        .memo = *std::move(memo),
        .filename = file.lexically_relative(context_.paths.versionsFolder()).string()};
  } catch (const Error&) {
    return std::nullopt;
  }
}

std::vector<VersionEntry> VersionStore::listVersions(
    Day day, std::int64_t seqNumber, const std::optional<std::string>& memoId) const {
  const auto identity = identityOf(day, seqNumber, memoId);
  if (!identity) return {};
  std::vector<std::filesystem::path> folders{identityDirectory(*identity)};
  for (const DirectoryEntry& other : entriesOf(context_.files, context_.paths.versionsFolder()))
    if (other.type == FileType::directory && other.name != identitiesFolder)
      folders.push_back(context_.paths.versionsFolder() / other.name);
  std::vector<VersionEntry> versions;
  for (const std::filesystem::path& folder : folders)
    for (const DirectoryEntry& file : entriesOf(context_.files, folder))
      if (pathExtension(file.name) == "md")
        if (auto entry = entryOf(folder / file.name, seqNumber, *identity))
          versions.push_back(std::move(*entry));
  std::ranges::stable_sort(versions, std::greater(), &VersionEntry::timestamp);
  return versions;
}

std::filesystem::path VersionStore::fileBelowVersions(const std::string& filename) const {
  const std::string folder = context_.paths.versionsFolder().lexically_normal().string() + "/";
  std::filesystem::path file = (context_.paths.versionsFolder() / filename).lexically_normal();
  // A forged name must not reach outside.
  if (!file.native().starts_with(folder) || file.native().size() == folder.size())
    throw WriteError(WriteError::Kind::identityChanged);
  return file;
}

Memo VersionStore::read(const VersionEntry& version, std::int64_t seqNumber) const {
  const std::filesystem::path file = fileBelowVersions(version.filename);
  std::optional<Memo> memo = MemoFile::read(context_.files, file, seqNumber);
  if (!memo) throw FileError("读取", file, ENOENT);
  return *std::move(memo);
}

void VersionStore::bringBackAttachments(Day day, const Memo& restored) const {
  const std::filesystem::path kept = identityDirectory(*restored.memoId) / "attachments";
  const std::filesystem::path dayFolder = context_.paths.dayFolder(day);
  for (const std::string& name : restored.attachments) {
    if (!isSafeFilename(name) || context_.files.exists(dayFolder / name)) continue;
    if (!context_.files.exists(kept / name)) throw MissingAttachmentError(name);
    context_.files.copyFile(kept / name, dayFolder / name);
  }
}

void VersionStore::restore(Day day, std::int64_t seqNumber, const VersionEntry& version,
                           const std::optional<Memo>& expected) const {
  context_.write([&] {
    const Memo restored = read(version, seqNumber);
    const std::optional<Memo> current = memoStore_.read(day, seqNumber);
    if (!restored.memoId || !current || current->memoId != restored.memoId)
      throw WriteError(WriteError::Kind::identityChanged);
    memoStore_.validateUpdate(restored, day, expected);
    bringBackAttachments(day, restored);
    memoStore_.validateUpdate(restored, day, expected);
    const auto snapshot = keepSnapshot(day, seqNumber, restored);
    memoStore_.write(restored, day);
    if (!snapshot) return;
    // Not before: the oldest snapshot may be the one that is being restored, and until it is
    // written the only place of that state.
    try {
      prune(*snapshot);
    } catch (const FileError& error) {
      Log::error(LogChannel::storage, "⚠️ VersionStore.restore: {}", error.what());
    }
  });
}

Memo VersionStore::restoreVanished(const VersionEntry& version, Day day,
                                   std::int64_t seqNumber) const {
  return context_.write([&] {
    Memo memo = read(version, seqNumber);
    context_.prepareFolder(context_.paths.dayFolder(day));
    try {
      bringBackAttachments(day, memo);
    } catch (const MissingAttachmentError& error) {
      // There is no memo that would be better off without its older state.
      Log::error(LogChannel::storage, "⚠️ VersionStore.restoreVanished: {}", error.what());
    }
    while (!memoStore_.create(memo, day)) ++memo.seqNumber;
    return memo;
  });
}

void VersionStore::deleteAllVersions(Day day, std::int64_t seqNumber,
                                     const std::optional<std::string>& memoId) const {
  context_.write([&] {
    const auto identity = identityOf(day, seqNumber, memoId);
    if (!identity) return;
    for (const VersionEntry& version : listVersions(day, seqNumber, identity))
      context_.files.removeFile(fileBelowVersions(version.filename));
    context_.files.removeTree(identityDirectory(*identity));
  });
}

void VersionStore::keepPlace(const std::filesystem::path& folder, const MemoPlace& place) const {
  const std::string text = place.string();
  if (context_.files.read(folder / placeFileName) != text)
    context_.files.writeAtomically(folder / placeFileName, text);
}

std::optional<MemoPlace> VersionStore::lastPlaceOf(std::string_view memoId) const {
  try {
    const auto text = context_.files.read(identityDirectory(memoId) / placeFileName);
    return text ? MemoPlace::parse(*text) : std::nullopt;
  } catch (const FileError&) {
    return std::nullopt;
  }
}

std::vector<std::string> VersionStore::identities(std::string_view prefix) const {
  std::vector<std::string> found;
  for (const DirectoryEntry& folder :
       entriesOf(context_.files, context_.paths.versionsByIdFolder()))
    if (auto identity = identityNamed(folder.name); identity && identity->starts_with(prefix))
      found.push_back(*std::move(identity));
  return found;
}

}  // namespace nomely
