#pragma once

#include <stop_token>

#include "Platform/Error.h"

namespace nomely {

// What ends work that was asked to stop. No failure: nobody is told of it.
class CancellationError : public Error {
 public:
  CancellationError() : Error("cancelled", "操作已取消") {}
};

// For the steps of long work.
inline void throwIfStopped(const std::stop_token& stop) {
  if (stop.stop_requested()) throw CancellationError();
}

}  // namespace nomely
