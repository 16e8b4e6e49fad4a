#include "CLI/Interruption.h"

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <utility>

#include <sys/eventfd.h>
#include <unistd.h>

namespace nomely {
namespace {

std::atomic<bool> interrupted;
std::atomic<int> wakeUp;  // an eventfd

void wakeWatcher() {
  constexpr std::uint64_t one = 1;
  (void)!::write(wakeUp, &one, sizeof one);
}

// A stop source takes a lock, which no signal handler may do: a thread asks it instead.
extern "C" void askToStop(int) {
  const int before = errno;
  if (interrupted.exchange(true)) ::_exit(interruptedStatus);
  wakeWatcher();
  errno = before;
}

}  // namespace

Interruption::Interruption(std::stop_source stop) {
  interrupted = false;
  wakeUp = ::eventfd(0, EFD_CLOEXEC);
  watcher_ = std::jthread([stop = std::move(stop)]() mutable {
    std::uint64_t count = 0;
    while (::read(wakeUp, &count, sizeof count) < 0 && errno == EINTR) {
    }
    if (interrupted) stop.request_stop();
  });
  struct sigaction action {};
  action.sa_handler = askToStop;
  action.sa_flags = SA_RESTART;
  ::sigaction(SIGINT, &action, &previous_);
}

Interruption::~Interruption() {
  ::sigaction(SIGINT, &previous_, nullptr);
  wakeWatcher();
  watcher_.join();
  ::close(wakeUp);
}

}  // namespace nomely
