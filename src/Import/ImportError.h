#pragma once

#include <string>

#include "Platform/Error.h"

namespace nomely {

// Why an export can't be imported.
class ImportError : public Error {
 public:
  explicit ImportError(const std::string& message) : Error("import", message) {}
};

}  // namespace nomely
