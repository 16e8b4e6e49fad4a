#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string_view>
#include <utility>

#include "Core/Storage/DiskPaths.h"
#include "Platform/Files/FileManager.h"

namespace nomely {

// What is known of a root once and for all, as small files in its `.meta`, one a marker, so that it
// goes with the root into a backup and onto another machine. Stateless; any thread. Changes run
// inside a write, or on a root that nobody else knows yet. Everything throws FileError.
class RootMarkers {
 public:
  RootMarkers(DiskPaths paths, const FileManager& files)
      : paths_(std::move(paths)), files_(files) {}

  // Whether every note in this root was written by a program that keeps today's format.
  [[nodiscard]] bool isMadeHere() const;
  // Marks a root that holds nothing yet. The gate does so before the first write of a process.
  void claimIfEmpty() const;

  [[nodiscard]] bool areColorSpansCleaned() const;
  void setColorSpansCleaned() const;

  // The schema version to which all memos have been brought; 0 when that isn't known.
  [[nodiscard]] std::int64_t migratedSchemaVersion() const;
  void setMigratedSchemaVersion(std::int64_t version) const;
  // For a root whose memos have been replaced by others.
  void forgetMigratedSchemaVersion() const;

  // The names of the markers.
  [[nodiscard]] static std::span<const std::string_view> names();

 private:
  [[nodiscard]] std::filesystem::path fileOf(std::string_view marker) const;
  void put(std::string_view marker, std::string_view value) const;
  [[nodiscard]] bool isEmpty() const;

  DiskPaths paths_;
  FileManager files_;
};

}  // namespace nomely
