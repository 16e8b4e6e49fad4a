#include "CLI/HiddenInput.h"

#include <array>
#include <cstdio>
#include <iostream>

#include <fmt/format.h>
#include <signal.h>
#include <termios.h>
#include <unistd.h>

#include "CLI/UsageError.h"

namespace nomely {
namespace {

constexpr std::array ending{SIGINT, SIGTERM, SIGHUP, SIGQUIT};

termios shown{};  // the terminal as it was

extern "C" void giveBackAndExit(int signal) {
  ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &shown);
  (void)!::write(STDERR_FILENO, "\n", 1);
  ::_exit(128 + signal);
}

class Hidden {
 public:
  Hidden() {
    if (::tcgetattr(STDIN_FILENO, &shown) != 0)
      throw UsageError("无法关闭终端的回显，请从标准输入给出密钥");
    struct sigaction action {};
    action.sa_handler = giveBackAndExit;
    for (std::size_t i = 0; i < ending.size(); ++i) ::sigaction(ending[i], &action, &previous_[i]);
    termios hidden = shown;
    hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
  }
  ~Hidden() {
    ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &shown);
    for (std::size_t i = 0; i < ending.size(); ++i) ::sigaction(ending[i], &previous_[i], nullptr);
  }
  Hidden(const Hidden&) = delete;
  Hidden& operator=(const Hidden&) = delete;

 private:
  std::array<struct sigaction, ending.size()> previous_{};
};

}  // namespace

std::string readHidden(std::string_view prompt) {
  std::string typed;
  {
    const Hidden hidden;
    fmt::print(stderr, "{}", prompt);
    std::fflush(stderr);
    std::getline(std::cin, typed);
    fmt::print(stderr, "\n");
  }
  if (typed.empty()) throw UsageError("没有输入密钥，未作任何改动");
  return typed;
}

}  // namespace nomely
