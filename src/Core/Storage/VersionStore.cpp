#include "Core/Storage/VersionStore.h"

#include <algorithm>
#include <chrono>
#include <tuple>
#include <vector>

#include <fmt/format.h>

#include "Core/Extensions/PathNames.h"
#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Storage/DerivedIdentity.h"
#include "Core/Storage/WriteError.h"

namespace nomely {
namespace {

// Seconds since 1970 to the microsecond, from a whole number: a floating-point one would let two
// names of far years fall together.
std::string secondsText(Moment moment) {
  constexpr std::int64_t perSecond = 1000000;
  const std::int64_t count = std::max<std::int64_t>(moment.time_since_epoch().count(), 0);
  return fmt::format("{}.{:06}", count / perSecond, count % perSecond);
}

// The first digits of a UUID that is not drawn.
constexpr std::string_view removalMark = "00000000";

struct Aged {
  std::optional<Moment> timestamp;
  std::string name;
};

// Of two names without a time, or of the same time, the greater one is the newer.
bool isNewer(const Aged& left, const Aged& right) {
  return std::tie(left.timestamp, left.name) > std::tie(right.timestamp, right.name);
}

std::vector<Aged> snapshotsIn(const FileManager& files, const std::filesystem::path& folder) {
  std::vector<Aged> found;
  for (DirectoryEntry& entry : files.listVisible(folder))
    if (pathExtension(entry.name) == "md")
      found.push_back({VersionStore::timestampOf(entry.name), std::move(entry.name)});
  return found;
}

}  // namespace

VersionStore::VersionStore(StoreContext context, std::size_t maxVersions)
    : context_(std::move(context)), memoStore_(context_), maxVersions_(maxVersions) {}

std::filesystem::path VersionStore::identityDirectory(std::string_view memoId) const {
  return context_.paths.versionsByIdFolder() / DiskPaths::identityName(memoId);
}

void VersionStore::saveIfNeeded(Day day, std::int64_t seqNumber, const Memo& newMemo) const {
  context_.write([&] {
    if (const auto snapshot = keepSnapshot(day, seqNumber, newMemo)) prune(*snapshot);
  });
}

std::optional<std::filesystem::path> VersionStore::keepSnapshot(Day day, std::int64_t seqNumber,
                                                                const Memo& newMemo) const {
  const std::optional<Memo> current = memoStore_.read(day, seqNumber);
  if (!current || *current == newMemo) return std::nullopt;
  if (!current->memoId || current->memoId->empty()) return std::nullopt;
  if (newMemo.memoId != current->memoId) throw WriteError(WriteError::Kind::identityChanged);
  const std::filesystem::path folder = identityDirectory(*current->memoId);
  context_.prepareFolder(folder);
  keepPlace(folder, {day, seqNumber});
  keepAttachments(day, *current, newMemo);
  const std::filesystem::path snapshot = folder / newestName(folder, "md");
  const auto attributes = context_.files.attributes(context_.paths.memoFile(day, seqNumber));
  (void)context_.files.createAtomically(
      snapshot, MemoFrontmatterParser::serialize(*current, current->body),
      attributes ? std::optional(attributes->permissions) : std::nullopt);
  return snapshot;
}

// Whatever the clock says: set back, it would make the newest snapshot the oldest, and pruning
// would take it at once.
std::string VersionStore::newestName(const std::filesystem::path& folder,
                                     std::string_view extension) const {
  Moment moment = context_.clock.now();
  constexpr Moment::duration step(1);
  for (const Aged& snapshot : snapshotsIn(context_.files, folder))
    if (snapshot.timestamp && timestampOf(secondsText(*snapshot.timestamp + step)))
      moment = std::max(moment, *snapshot.timestamp + step);
  return fmt::format("{}_{}.{}", secondsText(moment), Uuid::random().string(), extension);
}

void VersionStore::keepAttachments(Day day, const Memo& current, const Memo& newMemo) const {
  const std::filesystem::path folder = identityDirectory(*current.memoId) / "attachments";
  for (const std::string& name : current.attachments) {
    if (std::ranges::find(newMemo.attachments, name) != newMemo.attachments.end()) continue;
    if (!isSafeFilename(name)) continue;
    const std::filesystem::path source = context_.paths.dayFolder(day) / name;
    if (!context_.files.exists(source) || context_.files.exists(folder / name)) continue;
    context_.prepareFolder(folder);
    context_.files.copyFile(source, folder / name);
  }
}

void VersionStore::prune(const std::filesystem::path& added) const {
  std::vector<Aged> snapshots = snapshotsIn(context_.files, added.parent_path());
  if (snapshots.size() <= maxVersions_) return;
  std::ranges::sort(snapshots, isNewer);
  for (std::size_t i = maxVersions_; i < snapshots.size(); ++i)
    if (snapshots[i].name != added.filename())
      context_.files.removeFile(added.parent_path() / snapshots[i].name);
}

void VersionStore::keepState(std::string_view memoId, const ForeignState& state, Kept as) const {
  context_.write([&] {
    const std::filesystem::path folder = identityDirectory(memoId);
    const std::string_view extension = as == Kept::asOriginal ? "original" : "md";
    context_.prepareFolder(folder);
    for (const DirectoryEntry& entry : context_.files.listVisible(folder))
      if (pathExtension(entry.name) == extension &&
          (as != Kept::ofRemoval || isOfRemoval(entry.name)) &&
          context_.files.read(folder / entry.name) == state.content)
        return;
    const auto nameOf = [&](std::string_view kind) {
      std::string uuid = DerivedIdentity::uuid(kind, {state.content});
      if (as == Kept::ofRemoval) uuid.replace(0, removalMark.size(), removalMark);
      return fmt::format("{}_{}.{}", secondsText(state.written), uuid, extension);
    };
    // A damaged file may have its name.
    for (std::string kind = "version";
         !context_.files.createAtomically(folder / nameOf(kind), state.content, state.permissions);)
      kind += " again";
  });
}

bool VersionStore::isOfRemoval(std::string_view name) {
  const std::size_t dash = name.find('_');
  return dash != std::string_view::npos && name.substr(dash + 1).starts_with(removalMark);
}

bool VersionStore::keepAttachment(std::string_view memoId,
                                  const std::filesystem::path& file) const {
  return context_.write([&] {
    const std::filesystem::path folder = identityDirectory(memoId) / "attachments";
    const std::filesystem::path kept = folder / file.filename();
    if (context_.files.exists(kept)) return context_.files.contentsEqual(file, kept);
    context_.prepareFolder(folder);
    context_.files.copyFile(file, kept);
    return true;
  });
}

bool VersionStore::isSafeFilename(std::string_view name) {
  return !name.empty() && name != "." && name != ".." &&
         name.find_first_of(std::string_view("/\\\0", 3)) == std::string_view::npos;
}

}  // namespace nomely
