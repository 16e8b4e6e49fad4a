#include "Platform/System/ServiceManager.h"

#include <systemd/sd-daemon.h>

namespace nomely {

void tellServiceManager(const char* state) noexcept {
  (void)::sd_notify(0, state);
}

}  // namespace nomely
