#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace nomely {

// Base of every failure this program reports. `what()` is the text for the user, in Chinese unless
// a derived type says that it has none of its own; `code()` names the typed case for scripts, as
// "type.case", and never changes between versions.
class Error : public std::runtime_error {
 public:
  Error(std::string_view code, const std::string& text) : std::runtime_error(text), code_(code) {}

  [[nodiscard]] std::string_view code() const noexcept { return code_; }

 private:
  std::string_view code_;  // always a literal
};

}  // namespace nomely
