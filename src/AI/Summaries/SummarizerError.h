#pragma once

#include "Platform/Error.h"

namespace nomely {

// No summary comes of it.
class SummarizerError : public Error {
 public:
  enum class Kind { noNotes, invalidDate, unsupportedStyle, emptyReply };
  explicit SummarizerError(Kind kind);
  [[nodiscard]] Kind kind() const noexcept { return kind_; }

 private:
  Kind kind_;
};

}  // namespace nomely
