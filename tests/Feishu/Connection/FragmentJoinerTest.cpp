#include <gtest/gtest.h>

#include "Feishu/Connection/FragmentJoiner.h"

namespace nomely::test {
namespace {

using Fragment = FragmentJoiner::Fragment;

// What each fragment completes, "-" for nothing.
std::string joined(const std::vector<Fragment>& fragments, FragmentJoiner& joiner) {
  std::string outcome;
  for (const Fragment& fragment : fragments) outcome += joiner.add(fragment).value_or("-") + " ";
  return outcome;
}

TEST(FragmentJoinerTest, WhatCompletesAnEvent) {
  struct Case {
    const char* name;
    std::vector<Fragment> fragments;
    std::string outcome;
    bool isEmptied = true;
  };
  for (const Case& test : std::vector<Case>{
           {"in order", {{"m", 2, 0, "a"}, {"m", 2, 1, "b"}}, "- ab "},
           {"reversed", {{"m", 3, 2, "c"}, {"m", 3, 1, "b"}, {"m", 3, 0, "a"}}, "- - abc "},
           {"two at once",
            {{"m", 2, 0, "a"}, {"n", 2, 0, "c"}, {"m", 2, 1, "b"}, {"n", 2, 1, "d"}},
            "- - ab cd "},
           {"one replaces itself",
            {{"m", 2, 0, "a"}, {"m", 2, 0, "A"}, {"m", 2, 1, "b"}},
            "- - Ab "},
           {"empty ones",
            {{"m", 3, 0, ""}, {"m", 3, 0, ""}, {"m", 3, 1, "b"}, {"m", 3, 2, ""}},
            "- - - b "},
           {"again from the start",
            {{"m", 2, 0, "a"}, {"m", 2, 1, "b"}, {"m", 2, 1, "b"}},
            "- ab - ",
            false},
           {"seq outside",
            {{"m", 2, 0, "a"}, {"m", 2, 2, "x"}, {"m", 2, -1, "x"}, {"m", 2, 1, "b"}},
            "- - - ab "},
           {"sum changes", {{"m", 2, 0, "a"}, {"m", 256, 255, "x"}, {"m", 2, 1, "b"}}, "- - ab "},
           {"no id", {{"", 2, 0, "a"}, {"", 2, 1, "b"}}, "- - "},
           {"too many", {{"m", 257, 0, "a"}, {"n", std::int64_t{1} << 31, 0, "a"}}, "- - "}}) {
    SCOPED_TRACE(test.name);
    FragmentJoiner joiner;
    EXPECT_EQ(joined(test.fragments, joiner), test.outcome);
    EXPECT_EQ(joiner.bytes() == 0, test.isEmptied);
  }
}

TEST(FragmentJoinerTest, WhatWaitsIsBoundedAndTheOldestGoesFirst) {
  FragmentJoiner joiner;
  const std::string large(std::size_t{4} << 20, 'x');
  static_cast<void>(joiner.add({"first", 2, 0, "a"}));
  for (int i = 0; i < 14; ++i)
    static_cast<void>(joiner.add({"m" + std::to_string(i), 2, 0, large}));
  static_cast<void>(joiner.add({"kept", 2, 0, "a"}));
  static_cast<void>(joiner.add({"kept too", 3, 0, large}));
  EXPECT_EQ(joiner.add({"kept too", 3, 1, large}), std::nullopt);
  EXPECT_LE(joiner.bytes(), FragmentJoiner::mostBytes);
  EXPECT_EQ(joiner.add({"kept", 2, 1, "b"}), "ab");
  EXPECT_EQ(joiner.add({"first", 2, 1, "b"}), std::nullopt) << "it was dropped";

  // An event too large by itself goes alone; ids count too.
  FragmentJoiner other;
  for (int i = 0; i < 20; ++i) static_cast<void>(other.add({"huge", 256, i, large}));
  EXPECT_LE(other.bytes(), FragmentJoiner::mostBytes);
  for (int i = 0; i < 20; ++i) static_cast<void>(other.add({std::to_string(i) + large, 2, 0, ""}));
  EXPECT_LE(other.bytes(), FragmentJoiner::mostBytes);
}

}  // namespace
}  // namespace nomely::test
