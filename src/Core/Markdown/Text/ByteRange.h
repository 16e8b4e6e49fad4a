#pragma once

#include <cstddef>
#include <string_view>

namespace nomely {

// A stretch of bytes of a text.
struct ByteRange {
  std::size_t begin = 0;
  std::size_t end = 0;

  [[nodiscard]] std::string_view of(std::string_view text) const {
    return text.substr(begin, end - begin);
  }
  friend bool operator==(const ByteRange&, const ByteRange&) = default;
};

}  // namespace nomely
