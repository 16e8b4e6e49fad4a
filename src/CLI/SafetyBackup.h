#pragma once

#include "App/RiskyOperation.h"
#include "CLI/Session.h"
#include "CLI/Syntax.h"

namespace nomely {

// The backup that a command makes before something that is hard to take back, and the option to go
// without it: on a full disk that may be the only way on.
class SafetyBackup {
 public:
  void declare(Syntax& syntax);
  // Throws ImportSafetyError, which tells of the option.
  void make(Session& session, const RiskyOperation& operation) const;

 private:
  bool isLeftOut_ = false;
};

}  // namespace nomely
