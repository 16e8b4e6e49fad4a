#include "Support/ProgramRun.h"

#include <array>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

constexpr std::chrono::seconds longestRun{120};
constexpr std::chrono::seconds longestWait{30};

struct PseudoTerminal {
  int typist;   // the end at which a person would sit
  int program;  // the end that a program has as its streams
};

PseudoTerminal openTerminal() {
  const int typist = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (typist < 0 || ::grantpt(typist) != 0 || ::unlockpt(typist) != 0)
    throw std::runtime_error("no pseudo-terminal");
  return {typist, ::open(::ptsname(typist), O_RDWR | O_NOCTTY | O_CLOEXEC)};
}

void typeAt(int typist, std::string_view keys) {
  if (::write(typist, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size()))
    throw std::runtime_error("nothing can be typed");
}

std::vector<std::string> environmentFor(const fs::path& home, const ProgramCall& call) {
  std::map<std::string, std::string> variables = call.environment;
  variables.emplace("HOME", home.string());
  for (const char* kept : {"PATH", "TZ", "ASAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS"})
    if (const char* value = ::getenv(kept)) variables.emplace(kept, value);
  std::vector<std::string> entries;
  for (const auto& [name, value] : variables) entries.push_back(name + "=" + value);
  return entries;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (std::string& text : texts) result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

struct Streams {
  int in;
  int out;
  int err;
  bool areItsTerminal = false;  // makes `in` the terminal of a session of its own
};

pid_t start(const fs::path& program, const fs::path& home, const ProgramCall& call,
            const Streams& streams) {
  std::vector<std::string> arguments{program.string()};
  arguments.insert(arguments.end(), call.arguments.begin(), call.arguments.end());
  std::vector<std::string> variables = environmentFor(home, call);
  const std::vector<char*> argumentPointers = pointers(arguments);
  const std::vector<char*> variablePointers = pointers(variables);

  const pid_t child = ::fork();
  if (child == 0) {
    if (streams.areItsTerminal) {
      ::setsid();
      ::ioctl(streams.in, TIOCSCTTY, 0);
    }
    ::dup2(streams.in, STDIN_FILENO);
    ::dup2(streams.out, STDOUT_FILENO);
    ::dup2(streams.err, STDERR_FILENO);
    ::alarm(static_cast<unsigned>(longestRun.count()));
    ::execve(program.c_str(), argumentPointers.data(), variablePointers.data());
    ::_exit(127);
  }
  if (child < 0) throw std::runtime_error("no process");
  return child;
}

int statusAtEnd(pid_t child) {
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

ProgramResult runProgram(const fs::path& program, const fs::path& home, const ProgramCall& call) {
  const TemporaryFolder folder(quickParent());
  const auto open = [&](const char* name, int flags) {
    return ::open((folder.path() / name).c_str(), flags | O_CREAT | O_CLOEXEC, 0600);
  };
  writeFile(folder.path() / "in", call.input);
  const bool isTyped = call.inputKind == InputKind::terminal;
  const PseudoTerminal terminal = isTyped ? openTerminal() : PseudoTerminal{-1, -1};
  const Streams streams{.in = isTyped ? terminal.program : open("in", O_RDONLY),
                        .out = open("out", O_WRONLY),
                        .err = open("err", O_WRONLY)};
  if (isTyped) typeAt(terminal.typist, call.input);
  const int status = statusAtEnd(start(program, home, call, streams));
  for (const int descriptor : {streams.in, streams.out, streams.err, terminal.typist})
    ::close(descriptor);
  return {.status = status,
          .output = readFile(folder.path() / "out"),
          .errors = readFile(folder.path() / "err")};
}

TerminalRun::TerminalRun(const fs::path& program, const fs::path& home, ProgramCall call,
                         TerminalSize size) {
  const PseudoTerminal terminal = openTerminal();
  terminal_ = terminal.typist;
  const winsize window{.ws_row = size.rows, .ws_col = size.columns, .ws_xpixel = 0, .ws_ypixel = 0};
  ::ioctl(terminal.program, TIOCSWINSZ, &window);
  call.environment.emplace("TERM", "xterm-256color");
  const int end = terminal.program;
  program_ =
      start(program, home, call, {.in = end, .out = end, .err = end, .areItsTerminal = true});
  ::close(end);
}

TerminalRun::~TerminalRun() {
  // Whatever it started and left on the terminal is told by its closing.
  if (program_ > 0) ::kill(program_, SIGKILL);
  ::close(terminal_);
  if (program_ > 0) (void)statusAtEnd(program_);
}

void TerminalRun::type(std::string_view keys) const {
  typeAt(terminal_, keys);
}

std::string TerminalRun::waitFor(std::string_view text) {
  const auto deadline = std::chrono::steady_clock::now() + longestWait;
  while (true) {
    const std::string_view unseen = std::string_view(screen_).substr(seen_);
    if (const auto found = unseen.find(text); found != std::string_view::npos) {
      std::string result(unseen.substr(0, found + text.size()));
      seen_ += result.size();
      return result;
    }
    if (!receive(deadline))
      throw std::runtime_error("“" + std::string(text) + "” never came after: " + screen_);
  }
}

int TerminalRun::finish() {
  const auto deadline = std::chrono::steady_clock::now() + longestWait;
  while (receive(deadline)) {
  }
  return statusAtEnd(std::exchange(program_, -1));
}

bool TerminalRun::receive(std::chrono::steady_clock::time_point deadline) {
  const auto left =
      std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
  pollfd waited{.fd = terminal_, .events = POLLIN, .revents = 0};
  if (left.count() <= 0 || ::poll(&waited, 1, static_cast<int>(left.count())) == 0)
    throw std::runtime_error("the terminal waits for ever after: " + screen_);
  std::array<char, 4096> bytes{};
  // Reading fails once nobody holds the other end any more.
  const ssize_t count = ::read(terminal_, bytes.data(), bytes.size());
  if (count > 0) screen_.append(bytes.data(), static_cast<std::size_t>(count));
  return count > 0;
}

}  // namespace nomely::test
