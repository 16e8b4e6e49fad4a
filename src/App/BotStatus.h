#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "Feishu/Connection/ConnectionStatus.h"
#include "Platform/Files/FileManager.h"
#include "Platform/System/Environment.h"
#include "Platform/Text/Json.h"
#include "Platform/Time/Moment.h"

namespace nomely {

// How the chat bot of the resident process does, for other processes to read. Holds nothing of any
// message.
struct BotStatus {
  ConnectionStatus connection = {};
  Moment since;                             // of `connection`
  std::optional<Moment> lastRecorded = {};  // when a message became a memo, by this process
  std::int64_t recorded = 0;                // how many did
  std::int64_t process = 0;

  [[nodiscard]] Json json() const;

  // Where this machine keeps what it knows of a root's bot.
  [[nodiscard]] static std::filesystem::path folder(const Environment& environment,
                                                    const std::filesystem::path& root);
  // Absent when there is none or it can't be read.
  [[nodiscard]] static std::optional<BotStatus> read(const std::filesystem::path& folder,
                                                     const FileManager& files);
  // Throws FileError.
  void write(const std::filesystem::path& folder, const FileManager& files) const;
};

// "connected".
[[nodiscard]] const char* connectionCode(ConnectionStatus::Kind kind);
// "已连接"; of an error, its own text.
[[nodiscard]] std::string connectionText(const ConnectionStatus& status);

}  // namespace nomely
