#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "Platform/Error.h"

namespace nomely {

// YAML that can't be read or written. `what()` is a Chinese clause that says what is wrong and what
// to do about it, without the place.
class YamlError : public Error {
 public:
  explicit YamlError(const std::string& text, const std::string& problem = {}, std::size_t line = 0)
      : Error("yaml", text), problem_(problem), line_(line) {}

  // English, for logs: the library's words where it found the fault.
  [[nodiscard]] const std::string& problem() const noexcept { return problem_; }
  // The line of the source, the first being 1; 0 when the fault has no place.
  [[nodiscard]] std::size_t line() const noexcept { return line_; }

 private:
  std::string problem_;
  std::size_t line_;
};

// What `problem`, in libyaml's words, means to someone who wrote the line, as YamlError::what().
[[nodiscard]] std::string chineseYamlReason(std::string_view problem);

}  // namespace nomely
