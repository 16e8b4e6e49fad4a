#include "Core/Storage/DiskPaths.h"

#include <fmt/format.h>

#include "Core/Extensions/TextNumbers.h"
#include "Core/Storage/RescueFolders.h"
#include "Platform/Error.h"
#include "Platform/System/Log.h"

namespace nomely {

std::filesystem::path DiskPaths::usualRoot(const Environment& environment) {
  return environment.homeFolder() / "NomelyData";
}

DiskPaths DiskPaths::defaultPaths(const Environment& environment, const FileManager& files) {
  DiskPaths paths{usualRoot(environment)};
  try {
    paths.createRoot(files);
  } catch (const Error& error) {
    Log::error(LogChannel::storage, "⚠️ DiskPaths.defaultPaths: {}", error.what());
  }
  return paths;
}

void DiskPaths::createRoot(const FileManager& files) const {
  if (files.isDirectory(rootURL)) return;
  RescueFolders::throwIfAny(rootURL, files);
  constexpr unsigned ownerOnly = 0700;
  files.createDirectories(rootURL, ownerOnly);
}

std::filesystem::path DiskPaths::memoFile(Day day, std::int64_t seqNumber) const {
  return dayFolder(day) / memoFileName(seqNumber);
}

std::string DiskPaths::identityName(std::string_view memoId) {
  std::string name;
  for (const char byte : memoId)
    name += fmt::format("{:02x}", static_cast<unsigned>(static_cast<unsigned char>(byte)));
  return name;
}

std::string DiskPaths::memoFileName(std::int64_t seqNumber) {
  return fmt::format("{:03}.md", seqNumber);
}

std::optional<std::int64_t> DiskPaths::seqNumber(std::string_view fileName) {
  constexpr std::string_view extension = ".md";
  if (!fileName.ends_with(extension)) return std::nullopt;
  fileName.remove_suffix(extension.size());
  return parseDecimal(fileName);
}

}  // namespace nomely
