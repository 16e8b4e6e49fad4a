#pragma once

#include "Platform/Error.h"

namespace nomely {

// Why the gate or a store refused a write. The file on disk is as it was.
class WriteError : public Error {
 public:
  enum class Kind { maintenance, missingMemo, identityChanged, conflict };

  explicit WriteError(Kind kind);

  [[nodiscard]] Kind kind() const noexcept { return kind_; }

 private:
  Kind kind_;
};

}  // namespace nomely
