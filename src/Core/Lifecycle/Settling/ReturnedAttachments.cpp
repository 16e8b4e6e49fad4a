#include "Core/Lifecycle/Settling/ReturnedAttachments.h"

#include <chrono>

#include <fmt/format.h>

namespace nomely {
namespace {

// Longer than an engine takes from the first to the last file of one exchange.
constexpr std::chrono::minutes calm{10};

}  // namespace

void ReturnedAttachments::settle(const MemoPlace& place) {
  context_.write([&] {
    const std::filesystem::path folder = context_.paths.dayFolder(place.day);
    const auto attributes = context_.files.attributes(folder);
    const auto memo = service_.days().memoStore().read(place.day, place.seqNumber);
    if (!attributes || !memo || !memo->memoId) return;
    const auto age = context_.clock.now() - attributes->modified;
    if (age >= age.zero() && age < calm) return;
    for (const std::string& name : memo->attachments) {
      if (!AttachmentManager::isSafeName(name) || context_.files.exists(folder / name)) continue;
      const auto kept = find(name);
      if (!kept) continue;
      context_.files.copyFile(*kept, folder / name);
      ++result_.others;
      result_.changedMemos = true;
      result_.told.push_back(
          {kept->lexically_relative(context_.paths.rootURL),
           fmt::format("放回 {}，笔记仍然用它",
                       (folder / name).lexically_relative(context_.paths.rootURL).string())});
    }
  });
}

// A name is drawn for one file alone, so whose it was doesn't matter.
std::optional<std::filesystem::path> ReturnedAttachments::find(const std::string& name) {
  if (!kept_) kept_ = keptFiles();
  const auto found = kept_->find(name);
  if (found == kept_->end() || !context_.files.exists(found->second)) return std::nullopt;
  return found->second;
}

std::map<std::string, std::filesystem::path> ReturnedAttachments::keptFiles() const {
  std::map<std::string, std::filesystem::path> kept;
  const auto addFolder = [&](const std::filesystem::path& folder) {
    if (!context_.files.isDirectory(folder)) return;
    for (const DirectoryEntry& file : context_.files.listVisible(folder))
      if (file.type == FileType::regular && !DiskPaths::seqNumber(file.name))
        kept.try_emplace(file.name, folder / file.name);
  };
  const auto add = [&](const std::filesystem::path& all, const char* below) {
    if (!context_.files.isDirectory(all)) return;
    for (const DirectoryEntry& entry : context_.files.listVisible(all))
      addFolder(all / entry.name / below);
  };
  add(context_.paths.versionsByIdFolder(), TrashStore::attachmentsName);
  add(context_.paths.trashFolder(), TrashStore::attachmentsName);
  add(context_.paths.attachmentTrashFolder(), "");
  for (const Day day : service_.days().dayFolders()) addFolder(context_.paths.dayFolder(day));
  return kept;
}

}  // namespace nomely
