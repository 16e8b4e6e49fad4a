#pragma once

#include <string>

#include "Platform/Error.h"

namespace nomely {

// The command was called wrongly; the text says what would be right. Exit status 2.
class UsageError : public Error {
 public:
  explicit UsageError(const std::string& text) : Error("usage", text) {}
};

// Nothing has the name that was given. Exit status 4.
class NameNotFoundError : public Error {
 public:
  explicit NameNotFoundError(const std::string& text) : Error("notFound", text) {}
};

}  // namespace nomely
