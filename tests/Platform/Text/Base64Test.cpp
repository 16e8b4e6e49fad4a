#include <gtest/gtest.h>

#include "Platform/Text/Base64.h"

namespace nomely::test {
namespace {

TEST(Base64Test, BothWays) {
  for (const auto& [bytes, text] : {std::pair("f", "Zg=="),
                                    {"foob", "Zm9vYg=="},
                                    {"\xFB\xFF\xFE", "+//+"},
                                    {"日记", "5pel6K6w"}})
    EXPECT_EQ(encodeBase64(bytes), text);
  std::string all;
  for (int value = 0; value < 1024; ++value) {
    all += static_cast<char>(value * 7);
    EXPECT_EQ(decodeBase64(encodeBase64(all)), all);
  }
}

TEST(Base64Test, Malformed) {
  for (const char* text : {"Zg", "Zg=", "Z", "Zg=a", "=", "====", "Z===", "Zm9v====", "Zm 9",
                           "Zm9v\n", "Zm-_", "Zg==Zg==", "日"})
    EXPECT_FALSE(decodeBase64(text)) << text;
}

}  // namespace
}  // namespace nomely::test
