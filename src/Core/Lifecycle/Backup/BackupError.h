#pragma once

#include <string>

#include "Platform/Error.h"

namespace nomely {

class BackupError : public Error {
 public:
  enum class Kind { snapshotFailed, zipFailed, verifyFailed, restoreFailed, manifestNotFound };

  // snapshotFailed, restoreFailed: why.
  BackupError(Kind kind, const std::string& reason);
  // zipFailed, verifyFailed: ZipError's status.
  BackupError(Kind kind, int status);
  [[nodiscard]] static BackupError manifestNotFound();

  [[nodiscard]] Kind kind() const noexcept { return kind_; }

 private:
  BackupError(Kind kind, const char* code, const std::string& text);

  Kind kind_;
};

}  // namespace nomely
