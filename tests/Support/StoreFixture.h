#pragma once

#include <gtest/gtest.h>

#include "Core/Storage/DayStore.h"
#include "Support/ManualClock.h"
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

}  // namespace nomely::test
