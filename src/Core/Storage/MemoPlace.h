#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Time/Day.h"

namespace nomely {

// Where a memo stands, or stood.
struct MemoPlace {
  Day day;
  std::int64_t seqNumber = 0;

  // "2026-03-01,7", as the files say that keep a place.
  [[nodiscard]] std::string string() const;
  // Absent for a text that says something else. The number may be any.
  [[nodiscard]] static std::optional<MemoPlace> parse(std::string_view text);

  friend bool operator==(const MemoPlace&, const MemoPlace&) = default;
};

}  // namespace nomely
