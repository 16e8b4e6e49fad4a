#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Platform/Time/Moment.h"

namespace nomely {

// A message exchanged with the bot.
struct FeishuLogEntry {
  enum class Direction { incoming, outgoing };
  std::string id;  // a UUID
  Direction direction = Direction::incoming;
  Moment timestamp;
  std::string text;

  // A line of JSON without its line feed; the timestamp is a number, seconds since
  // 2001-01-01T00:00:00Z.
  [[nodiscard]] std::string line() const;
  // Reads ISO 8601 timestamps too. Absent when the line is damaged.
  [[nodiscard]] static std::optional<FeishuLogEntry> fromLine(std::string_view line);

  friend bool operator==(const FeishuLogEntry&, const FeishuLogEntry&) = default;
};

}  // namespace nomely
