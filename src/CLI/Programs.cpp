#include "CLI/Programs.h"

#include <algorithm>
#include <cerrno>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace nomely {

std::optional<std::filesystem::path> Programs::find(std::string_view name,
                                                    const Environment& environment) {
  const std::string folders = environment.get("PATH").value_or("/usr/bin:/bin");
  for (std::size_t begin = 0; begin <= folders.size();) {
    const std::size_t end = std::min(folders.find(':', begin), folders.size());
    const auto file = std::filesystem::path(folders.substr(begin, end - begin)) / name;
    if (::access(file.c_str(), X_OK) == 0) return file;
    begin = end + 1;
  }
  return std::nullopt;
}

int Programs::run(const std::vector<std::string>& words) {
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (const std::string& word : words) pointers.push_back(const_cast<char*>(word.c_str()));
  pointers.push_back(nullptr);
  struct sigaction ignore {};
  ignore.sa_handler = SIG_IGN;
  struct sigaction previous {};
  ::sigaction(SIGINT, &ignore, &previous);
  const pid_t child = ::fork();
  if (child == 0) {
    ::sigaction(SIGINT, &previous, nullptr);
    ::execvp(pointers.front(), pointers.data());
    ::_exit(127);
  }
  int status = -1;
  while (child > 0 && ::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  ::sigaction(SIGINT, &previous, nullptr);
  if (child < 0) return 127;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace nomely
