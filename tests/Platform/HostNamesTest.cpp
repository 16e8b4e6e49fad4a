#include <gtest/gtest.h>

#include "Platform/Text/HostNames.h"

namespace nomely::test {
namespace {

TEST(HostNamesTest, PublicSuffixes) {
  for (const char* host : {"example.com", "a.b.com.cn", "example.co.uk", "例子.中国",
                           "xn--fsqu00a.xn--fiqs8s", "münchen.de", "a.b.ck"}) {
    SCOPED_TRACE(host);
    EXPECT_TRUE(hasPublicSuffix(host));
  }
  for (const char* host :
       {"", "com", ".com", "localhost", "a.invalidname", "1.2.3.4", "a.", ".", "a.."}) {
    SCOPED_TRACE(host);
    EXPECT_FALSE(hasPublicSuffix(host));
  }
}

}  // namespace
}  // namespace nomely::test
