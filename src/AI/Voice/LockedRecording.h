#pragma once

#include <filesystem>
#include <optional>
#include <stop_token>
#include <vector>

#include "Platform/System/Descriptor.h"
#include "Platform/Time/Moment.h"

namespace nomely {

// A file in the folder of recordings that are in no memo yet. It is locked (flock(2)) by whoever
// records it or moves it into a memo, so one that nobody holds was left behind by a recorder that
// died. Throws FileError.
class LockedRecording {
 public:
  // A new, empty one, "voice_2026-03-01_093005.m4a"; one more of the same second ends in "_2".
  [[nodiscard]] static LockedRecording create(const std::filesystem::path& folder, Moment now);
  // Absent when it is held, or gone.
  [[nodiscard]] static std::optional<LockedRecording> tryLock(const std::filesystem::path& file);
  // All that nobody holds, oldest first. None when there is no such folder. Takes away what a
  // conversion that was cut off left.
  [[nodiscard]] static std::vector<LockedRecording> leftBehind(const std::filesystem::path& folder);

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }
  [[nodiscard]] int descriptor() const { return file_.get(); }
  // When it was begun: by its name, else when it was last written.
  [[nodiscard]] Moment begun() const;
  // Whether it has no sound: its recorder died within the first second.
  [[nodiscard]] bool isEmpty() const;

  // Puts a plain file in place of one that is made of fragments, atomically. Throws MediaError,
  // too; the file is then as it was.
  void makePlain(const std::stop_token& stop);
  // Removes it for good.
  void remove() const;

 private:
  LockedRecording(std::filesystem::path path, Descriptor file)
      : path_(std::move(path)), file_(std::move(file)) {}

  std::filesystem::path path_;
  Descriptor file_;
};

}  // namespace nomely
