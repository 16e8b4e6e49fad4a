#pragma once

#include <string>

namespace nomely::test::TestPaths {

// Where this checkout has the test program's fixtures, and the program itself.
extern const std::string fixtures;
extern const std::string nomely;

}  // namespace nomely::test::TestPaths
