#pragma once

#include <gmock/gmock.h>

// GoogleTest, with the matchers that most tests use under their bare names.

namespace nomely::test {

using testing::AllOf;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

}  // namespace nomely::test
