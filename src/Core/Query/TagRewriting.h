#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Models/Memo.h"

namespace nomely {

// What becomes of one memo's tags and body when a tag is renamed, merged or deleted, and under
// which tags the sidebar's sections list it. Pure.
//
// A tag is cut out of a body as text, without regard for where a word ends: cutting "work" leaves
// " /plan" of "#work/plan" and " shop" of "#workshop". An empty tag never touches a memo.
namespace TagRewriting {

// Whether one of the tags is the tag or below it.
[[nodiscard]] bool hasTag(const std::vector<std::string>& tags, std::string_view tag);
[[nodiscard]] std::string strippingTag(std::string_view body, std::string_view tag);

// These change nothing and return false for a memo that the operation is not about.

// Takes along what is below the tag, and both below the notes' root as well. The new tag stands
// among the tags alone: the old one's text in the body goes.
[[nodiscard]] bool rename(Memo& memo, std::string_view from, std::string_view to);
[[nodiscard]] bool merge(Memo& memo, std::string_view from, std::string_view into);
// Also where only the body holds the tag.
[[nodiscard]] bool remove(Memo& memo, std::string_view tag);

// Whether the memo goes along when the tag is deleted with its memos: it has the tag, or its body
// holds it and it is not hidden.
[[nodiscard]] bool goesWith(const Memo& memo, std::string_view tag);

// The tags under which a section lists a memo, absent for a memo that is not of the section. All
// tags of a note are listed, below the notes' root; of another section only its own, and of those
// only the lowest.
[[nodiscard]] std::optional<std::vector<std::string>> notesTags(
    const std::vector<std::string>& tags);
[[nodiscard]] std::optional<std::vector<std::string>> sectionTags(
    const std::vector<std::string>& tags, std::string_view root);

}  // namespace TagRewriting

}  // namespace nomely
