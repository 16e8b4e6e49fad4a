#include <gtest/gtest.h>

#include "Platform/Text/Base64.h"

namespace nomely::test {
namespace {

using namespace std::string_view_literals;

TEST(Base64Test, BothWays) {
  const struct {
    std::string_view bytes;
    std::string_view text;
  } cases[] = {
      {"", ""},
      {"f", "Zg=="},
      {"fo", "Zm8="},
      {"foo", "Zm9v"},
      {"foob", "Zm9vYg=="},
      {"\0\xFF\xFE"sv, "AP/+"},
      {"日记", "5pel6K6w"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(encodeBase64(c.bytes), c.text);
    EXPECT_EQ(decodeBase64(c.text), c.bytes);
  }
  std::string all;
  for (int value = 0; value < 1024; ++value) {
    all += static_cast<char>(value * 7);
    EXPECT_EQ(decodeBase64(encodeBase64(all)), all);
  }
}

TEST(Base64Test, Malformed) {
  for (const std::string_view text : {"Zg", "Zg=", "Z", "Zg=a", "=", "====", "Z===", "Zm9v====",
                                      "Zm 9", "Zm9v\n", "Zm-_", "Zg==Zg==", "日"}) {
    SCOPED_TRACE(text);
    EXPECT_FALSE(decodeBase64(text));
  }
}

}  // namespace
}  // namespace nomely::test
