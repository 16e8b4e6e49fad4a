#pragma once

#include <stdexcept>
#include <string>

namespace nomely::media {

// What ends a job of this program. `kind` is one word that the caller makes a text of; `detail`,
// in English, is for its log.
class Failure : public std::runtime_error {
 public:
  Failure(std::string kind, const std::string& detail)
      : std::runtime_error(detail), kind_(std::move(kind)) {}

  [[nodiscard]] const std::string& kind() const noexcept { return kind_; }

 private:
  std::string kind_;
};

}  // namespace nomely::media
