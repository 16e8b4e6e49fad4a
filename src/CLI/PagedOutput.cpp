#include "CLI/PagedOutput.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <optional>
#include <string>

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "CLI/Programs.h"

namespace nomely {
namespace {

// The command line of the user's pager; absent when there is none.
std::optional<std::string> pagerOf(const Environment& environment) {
  auto chosen = environment.get("PAGER");
  if (!chosen) {
    if (Programs::find("less", environment)) return "less";
    return std::nullopt;
  }
  if (chosen->empty() || *chosen == "cat") return std::nullopt;
  return chosen;
}

[[noreturn]] void becomePager(const std::string& command) {
  // Short output is shown in place, colours pass, the screen is left as it is, and text is text.
  ::setenv("LESS", "FRX", 0);
  ::setenv("LESSCHARSET", "utf-8", 0);
  // What a pager that can't be found leaves unread is shown all the same.
  const std::string line = command + "\nstatus=$?; [ $status = 127 ] && exec cat; exit $status";
  ::execl("/bin/sh", "sh", "-c", line.c_str(), nullptr);
  ::_exit(127);
}

}  // namespace

PagedOutput::PagedOutput(const Session& session) {
  if (session.isJson() || !session.isOutputTerminal()) return;
  const auto command = pagerOf(session.environment());
  std::array<int, 2> pipe{};
  if (!command || ::pipe2(pipe.data(), O_CLOEXEC) != 0) return;
  std::fflush(stdout);
  pager_ = ::fork();
  if (pager_ == 0) {
    ::dup2(pipe[0], STDIN_FILENO);
    becomePager(*command);
  }
  ::close(pipe[0]);
  if (pager_ > 0) {
    terminal_ = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    ::dup2(pipe[1], STDOUT_FILENO);
    ::signal(SIGINT, SIG_IGN);  // the pager's to handle
  }
  ::close(pipe[1]);
}

PagedOutput::~PagedOutput() {
  if (pager_ <= 0) return;
  std::fflush(stdout);
  // Closing the only write end is what tells the pager that the listing is complete.
  if (terminal_ >= 0) {
    ::dup2(terminal_, STDOUT_FILENO);
    ::close(terminal_);
  } else {
    ::close(STDOUT_FILENO);
  }
  while (::waitpid(pager_, nullptr, 0) < 0 && errno == EINTR) {
  }
}

}  // namespace nomely
