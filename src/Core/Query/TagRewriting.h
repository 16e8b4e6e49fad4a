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

// Whether one of `tags` is `tag` or below it: "a" and "a/x" are for "a", "ab" is not.
[[nodiscard]] bool hasTag(const std::vector<std::string>& tags, std::string_view tag);
// `body` with each "#tag" replaced by one blank, together with a blank before it and one after it.
[[nodiscard]] std::string strippingTag(std::string_view body, std::string_view tag);

// rename, merge and remove return false, with nothing changed, for a memo without the tag.

// rename("a" → "b") maps "a", "a/x", "备忘录/a", "备忘录/a/x" to "b", "b/x", "备忘录/b",
// "备忘录/b/x". In the body "#a" and "#备忘录/a" are cut out, and "#b" is not put in their place.
[[nodiscard]] bool rename(Memo& memo, std::string_view from, std::string_view to);
// merge("a" → "b") maps "a", "a/x" to "b", "b/x" and cuts "#a" and "#a/x" out of the body. Unlike
// rename it leaves "备忘录/a" alone.
[[nodiscard]] bool merge(Memo& memo, std::string_view from, std::string_view into);
// remove("a") drops the tags "a" and "a/x" and cuts their text out of the body; it also changes a
// memo that holds "#a" in the body alone.
[[nodiscard]] bool remove(Memo& memo, std::string_view tag);

// Whether deleting `tag` together with its memos deletes this memo: it has the tag or one below it,
// or its body holds "#tag" and the tag is not hidden.
[[nodiscard]] bool goesWith(const Memo& memo, std::string_view tag);

// The tags under which a section of the sidebar lists a memo; absent for a memo that is not of the
// section. Notes are listed under all their visible tags, below the notes' root:
// "备忘录/工作", "生活", "_notes_import" → "备忘录/工作", "备忘录/生活".
// Another section lists only its own tags, and of nested ones the deepest:
// "个人专栏", "个人专栏/甲", "个人专栏/甲/乙", "生活" → "个人专栏/甲/乙".
[[nodiscard]] std::optional<std::vector<std::string>> notesTags(
    const std::vector<std::string>& tags);
[[nodiscard]] std::optional<std::vector<std::string>> sectionTags(
    const std::vector<std::string>& tags, std::string_view root);

}  // namespace TagRewriting

}  // namespace nomely
