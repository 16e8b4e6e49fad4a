#include "Core/Storage/VersionStore.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <vector>

#include <fmt/format.h>

#include "Core/Extensions/PathNames.h"
#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Storage/WriteError.h"

namespace nomely {
namespace {

// Seconds since 1970, always to the microsecond: names then sort by age within a second too.
std::string secondsText(Moment moment) {
  const std::chrono::duration<double> seconds = moment.time_since_epoch();
  return fmt::format("{:.6f}", seconds.count());
}

}  // namespace

VersionStore::VersionStore(StoreContext context, std::size_t maxVersions)
    : context_(std::move(context)),
      memoStore_(context_),
      writes_(DataWriteCoordinator::shared(context_.paths.rootURL)),
      maxVersions_(maxVersions) {}

std::filesystem::path VersionStore::identityDirectory(std::string_view memoId) const {
  std::string name;
  for (const char byte : memoId)
    name += fmt::format("{:02x}", static_cast<unsigned>(static_cast<unsigned char>(byte)));
  return context_.paths.versionsByIdFolder() / name;
}

void VersionStore::saveIfNeeded(Day day, std::int64_t seqNumber, const Memo& newMemo) const {
  writes_.write([&] {
    if (const auto folder = keepSnapshot(day, seqNumber, newMemo)) prune(*folder);
  });
}

std::optional<std::filesystem::path> VersionStore::keepSnapshot(Day day, std::int64_t seqNumber,
                                                                const Memo& newMemo) const {
  const std::optional<Memo> current = memoStore_.read(day, seqNumber);
  if (!current || *current == newMemo) return std::nullopt;
  if (!current->memoId || current->memoId->empty()) return std::nullopt;
  if (newMemo.memoId != current->memoId) throw WriteError(WriteError::Kind::identityChanged);
  std::filesystem::path folder = identityDirectory(*current->memoId);
  writes_.prepareFolder(folder, context_.files);
  keepAttachments(day, *current, newMemo);
  const std::string name =
      fmt::format("{}_{}.md", secondsText(context_.clock.now()), Uuid::random().string());
  context_.files.writeAtomically(folder / name,
                                 MemoFrontmatterParser::serialize(*current, current->body));
  return folder;
}

void VersionStore::keepAttachments(Day day, const Memo& current, const Memo& newMemo) const {
  const std::filesystem::path folder = identityDirectory(*current.memoId) / "attachments";
  for (const std::string& name : current.attachments) {
    if (std::ranges::find(newMemo.attachments, name) != newMemo.attachments.end()) continue;
    if (!isSafeFilename(name)) continue;
    const std::filesystem::path source = context_.paths.dayFolder(day) / name;
    if (!context_.files.exists(source) || context_.files.exists(folder / name)) continue;
    writes_.prepareFolder(folder, context_.files);
    context_.files.copyFile(source, folder / name);
  }
}

void VersionStore::prune(const std::filesystem::path& folder) const {
  std::vector<std::string> names;
  for (DirectoryEntry& entry : context_.files.listVisible(folder))
    if (pathExtension(entry.name) == "md") names.push_back(std::move(entry.name));
  if (names.size() <= maxVersions_) return;
  std::ranges::sort(names, std::greater());
  for (std::size_t i = maxVersions_; i < names.size(); ++i)
    context_.files.removeFile(folder / names[i]);
}

bool VersionStore::isSafeFilename(std::string_view name) {
  return !name.empty() && name != "." && name != ".." &&
         name.find_first_of(std::string_view("/\\\0", 3)) == std::string_view::npos;
}

}  // namespace nomely
