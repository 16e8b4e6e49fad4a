#include "Core/Storage/RootMarkers.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "Core/Extensions/TextNumbers.h"

namespace nomely {
namespace {

constexpr std::string_view madeHere = "madeHere";
constexpr std::string_view colorSpansCleaned = "didCleanColorSpans_v1";
constexpr std::string_view migratedVersion = "nomely.lastMigratedSchemaVersion";
constexpr std::array all{madeHere, colorSpansCleaned, migratedVersion};
constexpr std::string_view set = "true\n";
// Far more than any marker has.
constexpr std::uint64_t longestValue = 64;  // bytes

}  // namespace

std::filesystem::path RootMarkers::fileOf(std::string_view marker) const {
  return paths_.metaFolder() / marker;
}

std::span<const std::string_view> RootMarkers::names() {
  return all;
}

bool RootMarkers::isMadeHere() const {
  return files_.exists(fileOf(madeHere));
}

void RootMarkers::claimIfEmpty() const {
  // A root with a history holds notes: that saves the look at one of many days.
  if (isMadeHere() || files_.exists(paths_.versionsFolder())) return;
  if (isEmpty()) put(madeHere, set);
}

// What a claim that was cut off left counts as nothing.
bool RootMarkers::isEmpty() const {
  FileSystem& system = files_.fileSystem();
  const auto isLeftover = [](const DirectoryEntry& entry) {
    return FileManager::isTemporaryName(entry.name);
  };
  const auto isNothing = [&](const DirectoryEntry& entry) {
    const std::filesystem::path path = paths_.rootURL / entry.name;
    if (path != paths_.metaFolder()) return isLeftover(entry);
    return entry.type == FileType::directory && std::ranges::all_of(system.list(path), isLeftover);
  };
  return std::ranges::all_of(system.list(paths_.rootURL), isNothing);
}

bool RootMarkers::areColorSpansCleaned() const {
  return files_.exists(fileOf(colorSpansCleaned));
}

void RootMarkers::setColorSpansCleaned() const {
  put(colorSpansCleaned, set);
}

std::int64_t RootMarkers::migratedSchemaVersion() const {
  std::string value = files_.read(fileOf(migratedVersion), longestValue).value_or("");
  if (value.ends_with('\n')) value.pop_back();
  return parseDecimal(value).value_or(0);
}

void RootMarkers::setMigratedSchemaVersion(std::int64_t version) const {
  put(migratedVersion, fmt::format("{}\n", version));
}

void RootMarkers::forgetMigratedSchemaVersion() const {
  files_.removeFile(fileOf(migratedVersion));
}

void RootMarkers::put(std::string_view marker, std::string_view value) const {
  constexpr unsigned ownerOnly = 0700;
  files_.createDirectories(paths_.metaFolder(), ownerOnly);
  files_.writeAtomically(fileOf(marker), value);
}

}  // namespace nomely
