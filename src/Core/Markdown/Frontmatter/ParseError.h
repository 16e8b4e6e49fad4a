#pragma once

#include <string>

#include "Platform/Error.h"

namespace nomely {

// Why a memo file's text is no memo. `what()` tells its owner what is wrong and how to mend it.
class ParseError : public Error {
 public:
  enum class Kind { yamlDecode, missingFrontmatter, unclosedFrontmatter };

  // `message` says more for yamlDecode, in English.
  ParseError(Kind kind, const std::string& text, const std::string& message = {});

  [[nodiscard]] Kind kind() const noexcept { return kind_; }
  [[nodiscard]] const std::string& message() const noexcept { return message_; }

 private:
  Kind kind_;
  std::string message_;
};

}  // namespace nomely
