#pragma once

#include <string>

namespace nomely::test::TestPaths {

// Where this checkout has the test program's fixtures, and the programs that tests start.
extern const std::string fixtures;
extern const std::string nomely;
extern const std::string writer;

}  // namespace nomely::test::TestPaths
