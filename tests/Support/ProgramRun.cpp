#include "Support/ProgramRun.h"

#include <array>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

namespace nomely::test {
namespace {

struct Pipe {
  int read = -1;
  int write = -1;
};

Pipe makePipe() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("pipe2 failed");
  return {ends[0], ends[1]};
}

// The program reads from the terminal's `read` end.
Pipe makeTerminal() {
  const int master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0)
    throw std::runtime_error("no pseudo-terminal");
  const int terminal = ::open(::ptsname(master), O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (terminal < 0) throw std::runtime_error("no pseudo-terminal");
  return {terminal, master};
}

std::vector<std::string> environmentFor(const std::filesystem::path& home,
                                        const ProgramCall& call) {
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

// Feeds `input` and collects both outputs until the program has closed them.
void pump(const Pipe& in, const Pipe& out, const Pipe& err, const ProgramCall& call,
          ProgramResult& result) {
  std::string_view rest = call.input;
  int feed = in.write;
  std::array<pollfd, 3> polled{pollfd{out.read, POLLIN, 0}, pollfd{err.read, POLLIN, 0},
                               pollfd{feed, POLLOUT, 0}};
  std::array<std::string*, 2> texts{&result.output, &result.errors};
  const auto endInput = [&] {
    // A terminal's reader sees its end only when it was typed.
    if (call.inputKind == InputKind::bytes) ::close(feed);
    polled[2].fd = -1;
  };
  if (rest.empty()) endInput();
  while (polled[0].fd >= 0 || polled[1].fd >= 0) {
    ::poll(polled.data(), polled.size(), -1);
    for (std::size_t i = 0; i < texts.size(); ++i) {
      if (polled[i].fd < 0 || polled[i].revents == 0) continue;
      std::array<char, 65536> buffer{};
      const ssize_t count = ::read(polled[i].fd, buffer.data(), buffer.size());
      if (count > 0)
        texts[i]->append(buffer.data(), static_cast<std::size_t>(count));
      else
        polled[i].fd = -1;
    }
    if (polled[2].fd >= 0 && polled[2].revents != 0) {
      const ssize_t count = ::write(feed, rest.data(), rest.size());
      if (count > 0) rest.remove_prefix(static_cast<std::size_t>(count));
      if (count <= 0 || rest.empty()) endInput();
    }
  }
}

}  // namespace

ProgramResult runProgram(const std::filesystem::path& program, const std::filesystem::path& home,
                         const ProgramCall& call) {
  ::signal(SIGPIPE, SIG_IGN);
  const Pipe in = call.inputKind == InputKind::terminal ? makeTerminal() : makePipe();
  const Pipe out = makePipe();
  const Pipe err = makePipe();
  std::vector<std::string> arguments{program.string()};
  arguments.insert(arguments.end(), call.arguments.begin(), call.arguments.end());
  std::vector<std::string> variables = environmentFor(home, call);
  const std::vector<char*> argumentPointers = pointers(arguments);
  const std::vector<char*> variablePointers = pointers(variables);

  const pid_t child = ::fork();
  if (child == 0) {
    ::dup2(in.read, STDIN_FILENO);
    ::dup2(out.write, STDOUT_FILENO);
    ::dup2(err.write, STDERR_FILENO);
    ::signal(SIGPIPE, SIG_DFL);
    ::execve(program.c_str(), argumentPointers.data(), variablePointers.data());
    ::_exit(127);
  }
  for (const int end : {in.read, out.write, err.write}) ::close(end);
  ProgramResult result;
  pump(in, out, err, call, result);
  int status = 0;
  ::waitpid(child, &status, 0);
  for (const int end : {out.read, err.read}) ::close(end);
  if (call.inputKind == InputKind::terminal) ::close(in.write);
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return result;
}

}  // namespace nomely::test
