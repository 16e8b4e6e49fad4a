#pragma once

#include <chrono>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Files/DirectoryLock.h"
#include "Platform/Files/FileManager.h"
#include "Platform/Time/Clock.h"

namespace nomely {

// The code by which a person shows the bot that a phone is theirs. It lies in a folder of the state
// folder, for its user's eyes alone, since the process that makes it is not the one that hears it.
// It holds for ten minutes, and five wrong guesses end it. Any thread.
class BotPairing {
 public:
  static constexpr std::chrono::minutes validity{10};
  static constexpr int mostGuesses = 5;

  // The clock must outlive it.
  BotPairing(const std::filesystem::path& stateFolder, const FileManager& files,
             const Clock& clock);

  // Six digits, in place of any earlier ones. Throws FileError.
  [[nodiscard]] std::string begin() const;
  // Whether a code is awaited.
  [[nodiscard]] bool isWaiting() const;
  // Whether the last one was begun and neither used nor called off in its time.
  [[nodiscard]] bool hasRunOut() const;
  // Whether `text` is the code that is awaited. Six digits that are not it count as a guess, and
  // end the code for this process where that can't be put on the disk.
  [[nodiscard]] bool matches(std::string_view text) const;
  // The code has done its work, or is called off: it is accepted no more, by this process even
  // where its file can't be removed.
  void end() const;

 private:
  struct Code {
    std::string digits;
    Moment end;
    int guesses = 0;
  };
  class Lock;

  // Absent when none is awaited. Throws FileError.
  [[nodiscard]] std::optional<Code> awaited() const;
  void count(Code code) const;
  void put(const Code& code) const;

  std::filesystem::path folder_;
  std::filesystem::path file_;
  FileManager files_;
  const Clock& clock_;
  mutable std::mutex mutex_;
  mutable DirectoryLock lock_;   // guarded by mutex_, like what follows
  mutable std::string refused_;  // the code that is accepted no more, whatever the file says
};

}  // namespace nomely
