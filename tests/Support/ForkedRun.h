#pragma once

#include <functional>
#include <ostream>
#include <string>

namespace nomely::test {

// How a child process ended.
struct ChildEnd {
  int status = 0;  // of its exit
  int signal = 0;  // that ended it, else 0

  friend bool operator==(const ChildEnd&, const ChildEnd&) = default;
  friend void PrintTo(const ChildEnd& end, std::ostream* stream) {
    *stream << "status " << end.status << ", signal " << end.signal;
  }
};

// How one ends whose body skipped the test.
inline constexpr ChildEnd skippedInChild{.status = 9};

// Runs `body` in a forked copy of this process, so that what it opens, mounts and registers goes
// with it, and waits for its end. Expectations that fail there are printed and make its status 1;
// so does an exception. After two minutes its alarm ends it. GTEST_SKIP there prints its reason;
// the caller has to skip too. Only for tests that have started no thread.
[[nodiscard]] ChildEnd runInChild(const std::function<void()>& body);

// The same for a body that gives a short text, which is returned.
[[nodiscard]] std::string inChild(const std::function<std::string()>& body);
// The same in another time zone, "America/New_York".
[[nodiscard]] std::string inZone(const char* zone, const std::function<std::string()>& body);

}  // namespace nomely::test
