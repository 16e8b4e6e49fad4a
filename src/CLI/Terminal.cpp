#include "CLI/Terminal.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Platform/Text/Unicode.h"

namespace nomely {

std::string Style::wrap(std::string_view code, std::string_view text) const {
  if (!enabled_ || text.empty()) return std::string(text);
  return fmt::format("\x1B[{}m{}\x1B[0m", code, text);
}

bool Terminal::isInput() {
  return ::isatty(STDIN_FILENO) != 0;
}
bool Terminal::isOutput() {
  return ::isatty(STDOUT_FILENO) != 0;
}
bool Terminal::isError() {
  return ::isatty(STDERR_FILENO) != 0;
}

std::size_t Terminal::columns() {
  constexpr std::size_t usual = 80;
  winsize size{};
  const bool isKnown = ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return isKnown ? size.ws_col : usual;
}

Style Terminal::styleFor(ColorMode mode, bool isTerminal, const Environment& environment) {
  if (mode != ColorMode::automatic) return Style(mode == ColorMode::always);
  const bool refused = !environment.get("NO_COLOR").value_or("").empty() ||
                       environment.get("TERM").value_or("dumb") == "dumb";
  return Style(isTerminal && !refused);
}

std::string Terminal::printable(std::string_view text) {
  std::string shown;
  shown.reserve(text.size());
  while (!text.empty()) {
    const DecodedCharacter character = decodeFirst(text);
    const char32_t value = character.value;
    const bool isControl =
        (value < 0x20 && value != '\n' && value != '\t') || (value >= 0x7F && value < 0xA0);
    if (isControl)
      appendUtf8(shown, 0xFFFD);
    else
      shown.append(text.substr(0, character.length));
    text.remove_prefix(character.length);
  }
  return shown;
}

PagedOutput::PagedOutput(const Environment& environment, bool isJson) {
  if (isJson || !Terminal::isOutput()) return;
  const std::string command = environment.get("PAGER").value_or("less");
  if (command.empty() || command == "cat") return;
  std::array<int, 2> pipe{};
  if (::pipe2(pipe.data(), O_CLOEXEC) != 0) return;
  std::fflush(stdout);
  pager_ = ::fork();
  if (pager_ == 0) {
    ::dup2(pipe[0], STDIN_FILENO);
    // Short output is shown in place, colours pass, and the screen is left as it is.
    ::setenv("LESS", "FRX", 0);
    ::execlp("sh", "sh", "-c", command.c_str(), nullptr);
    ::_exit(127);
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
