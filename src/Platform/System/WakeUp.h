#pragma once

#include <cstdint>

#include "Platform/System/Descriptor.h"

namespace nomely {

// What ends a thread's poll(2) from another one. Safe on any thread.
class WakeUp {
 public:
  WakeUp();  // throws std::system_error

  // The descriptor can be read from here on, until `clear`.
  void wake() const noexcept;
  void clear() const noexcept;
  [[nodiscard]] int descriptor() const noexcept { return event_.get(); }

 private:
  Descriptor event_;
};

}  // namespace nomely
