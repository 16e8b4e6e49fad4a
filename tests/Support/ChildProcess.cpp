#include "Support/ChildProcess.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <stdexcept>

#include <sys/wait.h>
#include <unistd.h>

namespace nomely::test {

std::string inChild(const std::function<std::string()>& body) {
  std::array<int, 2> ends{};
  if (::pipe(ends.data()) != 0) throw std::runtime_error("pipe failed");
  (void)std::fflush(nullptr);  // or both would print what is in the buffers
  const pid_t child = ::fork();
  if (child < 0) throw std::runtime_error("fork failed");
  if (child == 0) {
    // Nothing of the parent's is torn down here.
    try {
      const std::string text = body();
      const ssize_t written = ::write(ends[1], text.data(), text.size());
      ::_exit(written == static_cast<ssize_t>(text.size()) ? 0 : 1);
    } catch (...) {
      ::_exit(1);
    }
  }
  ::close(ends[1]);
  std::string text;
  std::array<char, 4096> buffer{};
  for (ssize_t count = 0; (count = ::read(ends[0], buffer.data(), buffer.size())) > 0;)
    text.append(buffer.data(), static_cast<std::size_t>(count));
  ::close(ends[0]);
  int status = 0;
  if (::waitpid(child, &status, 0) != child || status != 0)
    throw std::runtime_error("child failed");
  return text;
}

std::string inZone(const char* zone, const std::function<std::string()>& body) {
  return inChild([&] {
    ::setenv("TZ", zone, 1);
    ::tzset();
    return body();
  });
}

}  // namespace nomely::test
