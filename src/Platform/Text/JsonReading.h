#pragma once

#include <cstddef>
#include <string_view>

#include "Platform/Error.h"
#include "Platform/Text/Json.h"

namespace nomely {

// What came is no JSON. The text names the place at most, as what came may be private.
class JsonError : public Error {
 public:
  using Error::Error;
};

// The document in bytes that somebody else sent. Throws JsonError, also for arrays and objects that
// nest more than 64 deep.
[[nodiscard]] Json readJson(std::string_view bytes);

}  // namespace nomely
