#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Platform/Time/Moment.h"

namespace nomely {

// Who ordered an archive. The names of the cases stand in the manifest.
enum class ArchiveKind { automatic, nas, aliyun, drive115, manual };

// The kind's part of a file name: "auto", "nas", "aliyun", "115", "manual".
[[nodiscard]] std::string_view fileNamePart(ArchiveKind kind);

// What an archive says of itself, in NomelyBackupManifest.json at its top.
struct BackupManifest {
  static constexpr const char* fileName = "NomelyBackupManifest.json";

  std::string appName = "Nomely";
  int schemaVersion = 1;
  ArchiveKind archiveKind = ArchiveKind::automatic;
  Moment createdAt = {};
  std::string sourcePath = {};
  std::string rootStyle = "contents";
  bool includesVersions = false;
  std::string appVersion = {};
  std::string buildNumber = {};
  std::string restoreNote =
      "Unzip into a Nomely data directory. Nomely can identify this archive by "
      "NomelyBackupManifest.json.";
  // Markdown files of days, relative to the root, that could not be read as notes when the archive
  // was made: those and no others may be unreadable in it. Absent in JSON when empty.
  std::vector<std::string> unreadableFiles = {};

  // Pretty-printed with sorted keys, dates in ISO 8601.
  [[nodiscard]] std::string json() const;
  // Throws JsonError.
  [[nodiscard]] static BackupManifest parse(std::string_view json);

  bool operator==(const BackupManifest&) const = default;
};

}  // namespace nomely
