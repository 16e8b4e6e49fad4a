#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Files/FileManager.h"
#include "Platform/Time/Clock.h"

namespace nomely {

// The code by which a person shows the bot that a phone is theirs. It lies in a file of the state
// folder (0600), since the process that makes it is not the one that hears it; it holds for ten
// minutes, and five wrong guesses end it. Any thread.
class BotPairing {
 public:
  static constexpr std::chrono::minutes validity{10};

  BotPairing(std::filesystem::path stateFolder, const FileManager& files, const Clock& clock);

  // Six digits, in place of any earlier ones. Throws FileError.
  [[nodiscard]] std::string begin() const;
  // Whether a code is awaited.
  [[nodiscard]] bool isWaiting() const;
  // Whether `text` is the code that is awaited. Six digits that are not it count as a guess.
  [[nodiscard]] bool matches(std::string_view text) const;
  // The code has done its work, or is called off.
  void end() const;
};

}  // namespace nomely
