#include "Support/ForkedRun.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <system_error>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

[[noreturn]] void runAndExit(const std::function<void()>& body) {
  constexpr unsigned longest = 120;  // seconds
  ::alarm(longest);
  try {
    body();
  } catch (const std::exception& error) {
    ADD_FAILURE() << "exception in a child process: " << error.what();
  }
  const bool failed = testing::Test::HasFailure();
  std::fflush(nullptr);
  const bool skipped = !failed && testing::Test::IsSkipped();
  ::_exit(skipped ? skippedInChild.status : failed ? 1 : 0);
}

}  // namespace

ChildEnd runInChild(const std::function<void()>& body) {
  std::fflush(nullptr);  // or what is buffered would be printed twice
  const pid_t child = ::fork();
  if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (child == 0) runAndExit(body);
  int status = 0;
  while (::waitpid(child, &status, 0) < 0)
    if (errno != EINTR) throw std::system_error(errno, std::generic_category(), "waitpid");
  return WIFSIGNALED(status) ? ChildEnd{.signal = WTERMSIG(status)}
                             : ChildEnd{.status = WEXITSTATUS(status)};
}

std::string inChild(const std::function<std::string()>& body) {
  const TemporaryFolder folder;
  const fs::path text = folder.path() / "text";
  EXPECT_EQ(runInChild([&] { writeFile(text, body()); }), ChildEnd{});
  return readFile(text);
}

std::string inZone(const char* zone, const std::function<std::string()>& body) {
  return inChild([&] {
    ::setenv("TZ", zone, 1);
    ::tzset();
    return body();
  });
}

}  // namespace nomely::test
