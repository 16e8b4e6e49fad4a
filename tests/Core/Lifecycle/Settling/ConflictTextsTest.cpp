#include <gtest/gtest.h>

#include "Core/Lifecycle/Settling/ConflictMarkers.h"
#include "Core/Lifecycle/Settling/ConflictNames.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

TEST(ConflictNamesTest, TellWhatEnginesLeave) {
  for (const std::string& name : piecesOf(
           "003.sync-conflict-20261121-101530-ABCDEFG.md¦003 (conflicted copy 2026-11-21).md¦"
           "003 2.md¦003.md~¦003.md~HEAD¦003.md.orig¦003.MD¦7.md¦+7.md¦0012.md¦000.md¦想法.md"))
    EXPECT_TRUE(ConflictNames::isStrayNote(name)) << name;
  for (const std::string& name :
       piecesOf("003.md¦12345678.md¦.003.md¦3F2504E0.md¦3f2504e0.sync-conflict-2.md¦a.png¦003.mdx¦"
                "003.md.bak¦md"))
    EXPECT_FALSE(ConflictNames::isStrayNote(name)) << name;
  for (const std::string& name :
       piecesOf("tags.sync-conflict-20261121-101530-ABCDEFG.yaml¦tags (1).yaml¦tags 2.yaml¦"
                "tags.yaml~¦tags.yaml~HEAD¦tags.yaml.orig¦tags-LAPTOP.yaml¦tags.conflict1.YAML"))
    EXPECT_TRUE(ConflictNames::isCopyOf(name, "tags.yaml")) << name;
  for (const std::string& name :
       piecesOf("tags.yaml¦tags.yaml.corrupt-1795235666¦tags2.yaml¦tags.json¦tts.yaml¦tags"))
    EXPECT_FALSE(ConflictNames::isCopyOf(name, "tags.yaml")) << name;
}

TEST(ConflictMarkersTest, SplitAFileAtEveryBlock) {
  const struct {
    const char* text;
    const char* ours;  // null: it is left alone
    const char* theirs;
    bool touchHeader = false;
    bool areInCode = false;
  } cases[]{
      {"---\nt: 1\n---\na\n<<<<<<< HEAD\nb\n=======\nc\n>>>>>>> x\nd\n<<<<<<< HEAD\n=======\ne\n"
       ">>>>>>> x\n",
       "---\nt: 1\n---\na\nb\nd\n", "---\nt: 1\n---\na\nc\nd\ne\n"},
      {"---\r\n<<<<<<< HEAD\r\nt: 1\r\n||||||| 0a1b\r\nt: 0\r\n<<<<<<<<< Temporary\r\n=======\r\n"
       "t: 2\r\n>>>>>>> x\r\n---\r\na",
       "---\r\nt: 1\r\n---\r\na", "---\r\nt: 2\r\n---\r\na", true},
      {"<<<<<<< HEAD\n---\nt: 1\n---\n=======\n---\nt: 2\n---\n>>>>>>> x\n", "---\nt: 1\n---\n",
       "---\nt: 2\n---\n", true},
      {"---\n<<<<<<< HEAD\nt: 1\n---\nb\n=======\nt: 2\n---\nc\n>>>>>>> x", "---\nt: 1\n---\nb\n",
       "---\nt: 2\n---\nc\n", true},
      {"---\n---\n```\n<<<<<<< HEAD\nb\n=======\nc\n>>>>>>> x\n```\n", "---\n---\n```\nb\n```\n",
       "---\n---\n```\nc\n```\n", false, true},
      {"no header\n======= \n=======\n<<<<<<<\n=======\nc\n>>>>>>>\n",
       "no header\n======= \n=======\n", "no header\n======= \n=======\nc\n"},
      {"a\n<<<<<<< HEAD\nb\n=======\nc\n=======\nd\n>>>>>>> x\n", nullptr, nullptr},
      {"a\n<<<<<<< HEAD\nb\n>>>>>>> x\n", nullptr, nullptr},
      {"a\n<<<<<<< HEAD\nb\n=======\n>>>>>>> x\n<<<<<<< HEAD\n", nullptr, nullptr},
      {"a\n<<<<<<<HEAD\nb\n=======\n>>>>>>>x\n", nullptr, nullptr},
  };
  for (const auto& [text, ours, theirs, touchHeader, areInCode] : cases) {
    const auto found = ConflictMarkers::in(text);
    ASSERT_EQ(found.has_value(), ours != nullptr) << text;
    if (!found) continue;
    EXPECT_EQ(found->ours, ours);
    EXPECT_EQ(found->theirs, theirs);
    EXPECT_EQ(found->touchHeader, touchHeader) << text;
    EXPECT_EQ(found->areInCode, areInCode) << text;
  }
}

}  // namespace
}  // namespace nomely::test
