#include "Support/ProgramRun.h"

#include <stdexcept>

#include <fcntl.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

constexpr unsigned longestRun = 120;  // seconds

// The program reads what is typed at the other end, `typist`.
int openTerminal(int& typist) {
  typist = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (typist < 0 || ::grantpt(typist) != 0 || ::unlockpt(typist) != 0)
    throw std::runtime_error("no pseudo-terminal");
  return ::open(::ptsname(typist), O_RDWR | O_NOCTTY | O_CLOEXEC);
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

}  // namespace

ProgramResult runProgram(const std::filesystem::path& program, const std::filesystem::path& home,
                         const ProgramCall& call) {
  const TemporaryFolder folder(quickParent());
  const auto open = [&](const char* name, int flags) {
    return ::open((folder.path() / name).c_str(), flags | O_CREAT | O_CLOEXEC, 0600);
  };
  int typist = -1;
  writeFile(folder.path() / "in", call.input);
  const int in =
      call.inputKind == InputKind::terminal ? openTerminal(typist) : open("in", O_RDONLY);
  const int out = open("out", O_WRONLY);
  const int err = open("err", O_WRONLY);
  if (typist >= 0 && ::write(typist, call.input.data(), call.input.size()) < 0)
    throw std::runtime_error("nothing can be typed");
  std::vector<std::string> arguments{program.string()};
  arguments.insert(arguments.end(), call.arguments.begin(), call.arguments.end());
  std::vector<std::string> variables = environmentFor(home, call);
  const std::vector<char*> argumentPointers = pointers(arguments);
  const std::vector<char*> variablePointers = pointers(variables);

  const pid_t child = ::fork();
  if (child == 0) {
    ::dup2(in, STDIN_FILENO);
    ::dup2(out, STDOUT_FILENO);
    ::dup2(err, STDERR_FILENO);
    ::alarm(longestRun);
    ::execve(program.c_str(), argumentPointers.data(), variablePointers.data());
    ::_exit(127);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  for (const int descriptor : {in, out, err, typist}) ::close(descriptor);
  return {.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
          .output = readFile(folder.path() / "out"),
          .errors = readFile(folder.path() / "err")};
}

}  // namespace nomely::test
