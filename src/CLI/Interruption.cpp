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
std::atomic<bool> toldToReload;
std::atomic<bool> ended;
std::atomic<int> wakeUp;  // an eventfd

void wakeWatcher() {
  constexpr std::uint64_t one = 1;
  (void)!::write(wakeUp, &one, sizeof one);
}

// A stop source takes a lock, which no signal handler may do: a thread asks it instead.
extern "C" void takeSignal(int signal) {
  const int before = errno;
  if (signal == SIGHUP)
    toldToReload = true;
  else if (interrupted.exchange(true))
    ::_exit(interruptedStatus);
  wakeWatcher();
  errno = before;
}

void awaitWake() {
  std::uint64_t count = 0;
  while (::read(wakeUp, &count, sizeof count) < 0 && errno == EINTR) {
  }
}

}  // namespace

Interruption::Interruption(std::stop_source stop, std::function<void()> onReload) {
  interrupted = false;
  toldToReload = false;
  ended = false;
  wakeUp = ::eventfd(0, EFD_CLOEXEC);
  const bool stays = onReload != nullptr;
  watcher_ = std::jthread([stop = std::move(stop), onReload = std::move(onReload)]() mutable {
    while (!ended) {
      awaitWake();
      if (interrupted) return (void)stop.request_stop();
      if (toldToReload.exchange(false)) onReload();
    }
  });
  handle(SIGINT);
  if (!stays) return;
  handle(SIGTERM);
  handle(SIGHUP);
}

Interruption::~Interruption() {
  for (const Handled& each : handled_) ::sigaction(each.signal, &each.previous, nullptr);
  ended = true;
  wakeWatcher();
  watcher_.join();
  ::close(wakeUp);
}

void Interruption::handle(int signal) {
  struct sigaction action {};
  action.sa_handler = takeSignal;
  action.sa_flags = SA_RESTART;
  Handled& kept = handled_.emplace_back(Handled{signal, {}});
  ::sigaction(signal, &action, &kept.previous);
}

}  // namespace nomely
