#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "Core/Query/TagManagementStore.h"
#include "Core/Query/TagTree.h"
#include "Core/Storage/TagConfig.h"

namespace nomely {

// A row under the sidebar's lists: a section's heading, or a tag.
struct TagRow {
  enum class Kind : std::uint8_t { heading, tag };

  Kind kind = Kind::tag;
  std::string key;  // tells rows apart: one tag may stand in two sections
  std::string tag;  // whose memos the row shows; empty for a heading that shows none
  std::string label;
  std::int64_t count = 0;
  int depth = 0;
  bool opens = false;  // it can be unfolded
  bool isOpen = false;
  bool isPinned = false;
  bool isCollection = false;  // of a section of imported or generated memos
  std::string color = {};     // "#RRGGBB"; empty: none
  std::string emoji = {};

  friend bool operator==(const TagRow&, const TagRow&) = default;
};

// What the rows are made of. A value.
struct TagSource {
  std::vector<TagNode> roots = {};
  std::set<std::string, std::less<>> stored = {};  // tags of the sections that memos really have
  SidebarTagSummary notes = {};
  SidebarTagSummary personalColumn = {};
  SidebarTagSummary dedao = {};

  friend bool operator==(const TagSource&, const TagSource&) = default;
};

// What the user has set.
struct TagView {
  TagConfig config = {};
  std::set<std::string, std::less<>> open = {};  // tags that are unfolded
  std::vector<std::string> pinned = {};          // in the user's order
  bool isPinnedOpen = false;
};

namespace TagRows {

// Tags count as active by what was written in the days up to today, this many.
inline constexpr int activeDays = 90;

[[nodiscard]] std::vector<TagRow> of(const TagSource& source, const TagView& view);

// The key of the heading over the pinned tags, the one that folds.
inline constexpr const char* pinnedKey = "pinned";

}  // namespace TagRows

}  // namespace nomely
