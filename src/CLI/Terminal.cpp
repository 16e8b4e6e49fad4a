#include "CLI/Terminal.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "Platform/Text/Printable.h"

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
  return nomely::printable(text);
}

}  // namespace nomely
