#pragma once

#include <optional>
#include <string>

namespace nomely {

// What a clipboard offers.
class Pasteboard {
 public:
  virtual ~Pasteboard() = default;

  [[nodiscard]] virtual bool hasImages() const = 0;
  // UTF-8; bytes that are not are read as U+FFFD.
  [[nodiscard]] virtual std::optional<std::string> html() const = 0;
  [[nodiscard]] virtual std::optional<std::string> richText() const = 0;  // RTF
};

}  // namespace nomely
