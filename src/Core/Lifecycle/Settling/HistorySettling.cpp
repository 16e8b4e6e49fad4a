#include "Core/Lifecycle/Settling/HistorySettling.h"

#include <algorithm>

#include <fmt/format.h>

#include "Core/Lifecycle/Settling/ConflictNames.h"
#include "Core/Storage/VersionStore.h"

namespace nomely {
namespace {

bool holds(const std::vector<DirectoryEntry>& files, const std::string& name) {
  return std::ranges::find(files, name, &DirectoryEntry::name) != files.end();
}

// "1795235666.834093_9D0DBF25-B8E5-4B9A-9E55-1E7A90A1F8A3 (1).md" → the name without " (1)". Such
// names have one length, but for the digits of the seconds.
std::string baseOf(const std::string& name) {
  if (ConflictNames::isCopyOf(name, VersionStore::placeFileName))
    return VersionStore::placeFileName;
  constexpr std::size_t uuidLength = 36;
  const std::size_t end = name.find('_') + 1 + uuidLength;
  if (VersionStore::timestampOf(name) && name.find('_') != std::string::npos && end < name.size())
    for (const char* extension : {".md", ".original"})
      if (ConflictNames::isCopyOf(name, name.substr(0, end) + extension))
        return name.substr(0, end) + extension;
  return ConflictNames::attachmentCopied(name);
}

}  // namespace

std::vector<HistorySettling::Copy> HistorySettling::copiesIn(
    const std::vector<DirectoryEntry>& files) {
  std::vector<Copy> copies;
  for (const DirectoryEntry& file : files)
    if (file.type == FileType::regular)
      if (std::string base = baseOf(file.name); !base.empty() && holds(files, base))
        copies.push_back({file.name, std::move(base)});
  return copies;
}

bool HistorySettling::concerns(const std::vector<DirectoryEntry>& files) {
  return !copiesIn(files).empty();
}

bool HistorySettling::isSettled(const std::filesystem::path& folder, const Copy& copy) const {
  return copy.base == VersionStore::placeFileName ||
         context_.files.contentsEqual(folder / copy.name, folder / copy.base);
}

void HistorySettling::settle(const std::filesystem::path& folder) {
  context_.write([&] {
    for (const Copy& copy : copiesIn(context_.files.listVisible(folder))) {
      if (!isSettled(folder, copy)) continue;
      context_.files.removeFile(folder / copy.name);
      ++result_.others;
      result_.told.push_back({(folder / copy.name).lexically_relative(context_.paths.rootURL),
                              fmt::format("和 {} 一样，已移除", copy.base)});
    }
  });
}

void HistorySettling::addStrays(const std::filesystem::path& folder,
                                std::vector<Stray>& strays) const {
  for (const Copy& copy : copiesIn(context_.files.listVisible(folder))) {
    const bool canBeSettled = isSettled(folder, copy);
    strays.push_back({(folder / copy.name).lexically_relative(context_.paths.rootURL),
                      canBeSettled ? SettlingResult::willBeSettled
                                   : fmt::format("和 {} 内容不同，保持原样", copy.base),
                      canBeSettled});
  }
}

}  // namespace nomely
