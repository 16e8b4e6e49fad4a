#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Files/FileManager.h"
#include "Platform/System/Environment.h"
#include "Platform/Time/Day.h"

namespace nomely {

// Where everything lies under the data root. A value, passed to every store.
struct DiskPaths {
  std::filesystem::path rootURL;

  // "NomelyData" in the home folder.
  [[nodiscard]] static std::filesystem::path usualRoot(const Environment& environment);
  // The same as a root, created readable by its owner alone if missing. Does not throw
  // when that fails: the first write does.
  [[nodiscard]] static DiskPaths defaultPaths(const Environment& environment,
                                              const FileManager& files);

  // Creates a missing root, readable by its owner alone. Throws FileError, and Error (root.rescue)
  // where a restore has left a former root beside the missing one: see RescueFolders.
  void createRoot(const FileManager& files) const;

  [[nodiscard]] std::filesystem::path dayFolder(Day day) const { return rootURL / day.string(); }
  [[nodiscard]] std::filesystem::path memoFile(Day day, std::int64_t seqNumber) const;
  [[nodiscard]] std::filesystem::path configFolder() const { return rootURL / "_config"; }
  [[nodiscard]] std::filesystem::path trashFolder() const { return rootURL / ".trash"; }
  [[nodiscard]] std::filesystem::path attachmentTrashFolder() const {
    return trashFolder() / "_attachments";
  }
  [[nodiscard]] std::filesystem::path versionsFolder() const { return rootURL / ".versions"; }
  [[nodiscard]] std::filesystem::path versionsByIdFolder() const {
    return versionsFolder() / "by-id";
  }
  [[nodiscard]] std::filesystem::path metaFolder() const { return rootURL / ".meta"; }
  [[nodiscard]] std::filesystem::path draftsFolder() const { return rootURL / ".drafts"; }

  // The name by which a memo's history and draft are filed: "a/b" → "612f62".
  [[nodiscard]] static std::string identityName(std::string_view memoId);
  // "007.md": at least three digits.
  [[nodiscard]] static std::string memoFileName(std::int64_t seqNumber);
  // The number that a name with extension "md" spells, whatever its form ("+7.md", "0012.md").
  [[nodiscard]] static std::optional<std::int64_t> seqNumber(std::string_view fileName);
};

}  // namespace nomely
