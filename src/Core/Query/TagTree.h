#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Core/Models/Memo.h"
#include "Platform/Time/Day.h"

namespace nomely {

// A tag with those nested below it. `count` is what its list shows: the visible memos that have it
// or one below it, each once. "工作/会议" makes a node of "工作" too, whether a memo has that or
// not.
struct TagNode {
  std::string tag;
  std::int64_t count = 0;
  std::int64_t recent = 0;  // of these, how many are of the days of `activeSince`
  std::pair<Day, std::int64_t> latest{Day({}), 0};  // day and number of the newest
  std::vector<TagNode> children = {};               // by tag

  friend bool operator==(const TagNode&, const TagNode&) = default;
};

// Makes the tree of the tags of many memos. Hidden tags and those of the sidebar's own sections are
// left out.
class TagTree {
 public:
  explicit TagTree(Day activeSince) : activeSince_(activeSince) {}

  // Each memo once, in any order.
  void add(Day day, const Memo& memo);
  [[nodiscard]] std::vector<TagNode> roots() const;

 private:
  void count(std::string_view tag, Day day, std::int64_t seqNumber);

  Day activeSince_;
  std::map<std::string, TagNode, std::less<>> nodes_;
  std::vector<std::string_view> ofMemo_;  // of the memo that is being added
};

}  // namespace nomely
