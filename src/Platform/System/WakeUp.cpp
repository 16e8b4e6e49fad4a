#include "Platform/System/WakeUp.h"

#include <cerrno>
#include <system_error>

#include <sys/eventfd.h>

namespace nomely {

WakeUp::WakeUp() : event_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (event_.get() < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
}

void WakeUp::wake() const noexcept {
  constexpr std::uint64_t one = 1;
  (void)!::write(event_.get(), &one, sizeof one);
}

void WakeUp::clear() const noexcept {
  std::uint64_t count = 0;
  (void)!::read(event_.get(), &count, sizeof count);
}

}  // namespace nomely
