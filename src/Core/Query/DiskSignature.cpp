#include "Core/Query/DiskSignature.h"

#include <algorithm>

#include "Core/Extensions/PathNames.h"
#include "Platform/Files/FileError.h"

namespace nomely {
namespace {

std::vector<DirectoryEntry> listedOrNothing(const std::filesystem::path& folder,
                                            const FileManager& files) {
  try {
    return files.listVisible(folder);
  } catch (const FileError&) {
    return {};
  }
}

bool isMemoFile(const DirectoryEntry& entry) {
  return pathExtension(entry.name) == "md";
}

}  // namespace

std::optional<FileStamp> FileStamp::of(const std::filesystem::path& file,
                                       const FileManager& files) {
  try {
    const auto attributes = files.attributes(file);
    if (!attributes) return std::nullopt;
    return FileStamp{attributes->modified, attributes->size, attributes->fileNumber};
  } catch (const FileError&) {
    return std::nullopt;
  }
}

DiskSignature::Files DiskSignature::stampsOf(const std::filesystem::path& folder,
                                             const std::vector<DirectoryEntry>& entries,
                                             const FileManager& files) {
  Files stamps;
  stamps.reserve(entries.size());
  for (const DirectoryEntry& entry : entries) {
    if (!isMemoFile(entry)) continue;
    if (const auto stamp = FileStamp::of(folder / entry.name, files))
      stamps.push_back({entry.name, *stamp});
  }
  return stamps;
}

DiskSignature DiskSignature::read(const StoreContext& context, JobPool& jobs,
                                  const Visitor& visitor) {
  std::vector<Day> days;
  for (const DirectoryEntry& entry : listedOrNothing(context.paths.rootURL, context.files))
    if (const auto day = Day::parse(entry.name)) days.push_back(*day);
  std::ranges::sort(days);
  if (visitor.begin) visitor.begin(days.size());

  std::vector<Files> stamps(days.size());
  jobs.parallelFor(days.size(), [&](std::size_t i) {
    const std::filesystem::path folder = context.paths.dayFolder(days[i]);
    const std::vector<DirectoryEntry> entries = listedOrNothing(folder, context.files);
    if (std::ranges::none_of(entries, isMemoFile)) return;
    stamps[i] = stampsOf(folder, entries, context.files);
    if (visitor.day) visitor.day(i, days[i], entries);
  });

  DiskSignature signature;
  for (std::size_t i = 0; i < days.size(); ++i)
    if (!stamps[i].empty())
      signature.days_.emplace_hint(signature.days_.end(), days[i], std::move(stamps[i]));
  return signature;
}

void DiskSignature::set(Day day, const std::string& fileName,
                        const std::optional<FileStamp>& stamp) {
  Files& files = days_[day];
  const auto at = std::ranges::lower_bound(files, fileName, {}, &File::name);
  const bool isThere = at != files.end() && at->name == fileName;
  if (stamp && isThere)
    at->stamp = *stamp;
  else if (stamp)
    files.insert(at, {fileName, *stamp});
  else if (isThere)
    files.erase(at);
  if (files.empty()) days_.erase(day);
}

}  // namespace nomely
