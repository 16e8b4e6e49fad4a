#include "Core/Storage/MemoPlace.h"

#include <fmt/format.h>

#include "Core/Extensions/TextNumbers.h"

namespace nomely {

std::string MemoPlace::string() const {
  return fmt::format("{},{}", day.string(), seqNumber);
}

std::optional<MemoPlace> MemoPlace::parse(std::string_view text) {
  const std::size_t comma = text.find(',');
  if (comma == std::string_view::npos) return std::nullopt;
  const auto date = Day::parse(text.substr(0, comma));
  const auto number = parseDecimal(text.substr(comma + 1));
  if (!date || !number) return std::nullopt;
  return MemoPlace{*date, *number};
}

}  // namespace nomely
