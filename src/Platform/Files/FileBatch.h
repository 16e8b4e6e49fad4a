#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string_view>
#include <vector>

#include "Platform/Files/FileManager.h"

namespace nomely {

// New files of one file system that wait for the disk together. Contents lie under temporary names
// until one wait has made all of them durable; only then do they get their own names, so that a
// power cut leaves each of them whole or not at all. What was not placed is taken away again at the
// end of the batch's life.
//
// Everything throws FileError. For one thread.
class FileBatch {
 public:
  explicit FileBatch(const FileManager& files) : fileSystem_(files.fileSystem()) {}
  ~FileBatch() { discard(); }
  FileBatch(const FileBatch&) = delete;
  FileBatch& operator=(const FileBatch&) = delete;

  // Writes a file's contents in that folder and returns the file's number in the batch. What
  // throws, `produce` included, leaves nothing.
  std::size_t add(const std::filesystem::path& folder, const FileManager::Producer& produce);

  // Returns when the contents of every file so far are durable.
  void settle();

  // Gives a settled file its name, in its folder. False when that is taken. The name is durable
  // after the next settle, of this batch or of the file system.
  [[nodiscard]] bool place(std::size_t file, const std::filesystem::path& target);

  // Takes away what was not placed.
  void discard() noexcept;

  [[nodiscard]] std::uint64_t bytes() const { return bytes_; }  // of all contents

 private:
  void takeAway(const std::filesystem::path& name) const noexcept;
  [[nodiscard]] bool isGone(const std::filesystem::path& name) const noexcept;

  FileSystem& fileSystem_;
  std::vector<std::filesystem::path> temporaries_;  // empty: placed
  std::filesystem::path folder_;                    // of the last one
  std::uint64_t bytes_ = 0;
};

}  // namespace nomely
