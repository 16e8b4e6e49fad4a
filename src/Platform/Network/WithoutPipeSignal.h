#pragma once

#include <cerrno>

#include <signal.h>

namespace nomely {

// For as long as it stands, this thread writes to closed connections without ending the program:
// the TLS library writes without asking that no SIGPIPE come of it.
class WithoutPipeSignal {
 public:
  WithoutPipeSignal() {
    ::sigemptyset(&pipe_);
    ::sigaddset(&pipe_, SIGPIPE);
    sigset_t pending;
    ::sigpending(&pending);
    wasPending_ = ::sigismember(&pending, SIGPIPE) == 1;
    ::pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
  }
  ~WithoutPipeSignal() {
    const timespec atOnce{};
    if (!wasPending_)
      while (::sigtimedwait(&pipe_, nullptr, &atOnce) == -1 && errno == EINTR) continue;
    ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }
  WithoutPipeSignal(const WithoutPipeSignal&) = delete;
  WithoutPipeSignal& operator=(const WithoutPipeSignal&) = delete;

 private:
  sigset_t pipe_{};
  sigset_t before_{};
  bool wasPending_ = false;
};

}  // namespace nomely
