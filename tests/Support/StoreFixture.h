#pragma once

#include "Core/Storage/DayStore.h"
#include "Support/ManualClock.h"
#include "Support/Matchers.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {

// Stores on an empty root of their own.
class StoreTest : public testing::Test {
 protected:
  TemporaryFolder folder{quickParent()};
  ManualClock clock;
  StoreContext context{{folder.path()}, FileManager(posixFileSystem()), clock};
  DayStore store{context};
};

[[nodiscard]] std::vector<std::string> bodiesOf(const auto& entries) {
  std::vector<std::string> bodies;
  for (const auto& entry : entries) bodies.push_back(entry.memo->body);
  return bodies;
}

}  // namespace nomely::test
