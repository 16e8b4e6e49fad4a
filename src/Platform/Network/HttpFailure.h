#pragma once

#include "Platform/Network/Curl.h"
#include "Platform/Network/HttpClient.h"

namespace nomely {

// What a user is told of a transfer from `host` that libcurl gave up; `osError` is the errno of a
// failed connection, 0 when there is none.
[[nodiscard]] HttpError httpFailure(CURLcode code, int osError, const std::string& host);

}  // namespace nomely
