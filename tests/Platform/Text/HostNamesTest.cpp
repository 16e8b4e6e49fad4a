#include <gtest/gtest.h>

#include "Platform/Text/HostNames.h"

namespace nomely::test {
namespace {

TEST(HostNamesTest, PublicSuffixes) {
  for (const char* host : {"example.com", "a.b.com.cn", "example.co.uk", "例子.中国",
                           "xn--fsqu00a.xn--fiqs8s", "münchen.de", "a.b.ck"})
    EXPECT_TRUE(hasPublicSuffix(host)) << host;
  for (const char* host :
       {"", "com", ".com", "localhost", "a.invalidname", "1.2.3.4", "a.", ".", "a.."})
    EXPECT_FALSE(hasPublicSuffix(host)) << host;
}

}  // namespace
}  // namespace nomely::test
