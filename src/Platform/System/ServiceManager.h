#pragma once

namespace nomely {

// Tells systemd how a service does ("READY=1", "STATUS=..."; sd_notify(3)); nothing where it is not
// what started this process. Never fails; any thread.
void tellServiceManager(const char* state) noexcept;

}  // namespace nomely
