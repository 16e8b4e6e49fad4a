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
  struct Whole {};  // the text is told as it stands
  BackupError(Kind kind, const std::string& text, Whole);

  Kind kind_;
};

}  // namespace nomely
