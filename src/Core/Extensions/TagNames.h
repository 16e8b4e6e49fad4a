#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace nomely {

// What a tag's name says. Tags nest by "/": "工作/计划" is below "工作".
namespace TagNames {

// Roots of the sidebar's own sections, whose memos stay out of the main timeline.
constexpr std::string_view notesRoot = "备忘录";
constexpr std::string_view personalColumnRoot = "个人专栏";
constexpr std::string_view dedaoRoot = "得到大脑";
constexpr std::array<std::string_view, 3> sectionRoots{notesRoot, personalColumnRoot, dedaoRoot};
// On every imported note.
constexpr std::string_view notesImportTag = "_notes_import";

// Hidden tags are for programs: never shown, never offered.
[[nodiscard]] constexpr bool isHidden(std::string_view tag) {
  return tag.starts_with('_');
}

[[nodiscard]] constexpr bool isBelow(std::string_view tag, std::string_view root) {
  return tag.size() > root.size() && tag.starts_with(root) && tag[root.size()] == '/';
}

[[nodiscard]] constexpr bool isOrIsBelow(std::string_view tag, std::string_view root) {
  return tag == root || isBelow(tag, root);
}

// What becomes of `tag` when `from`, with all below it, is called `to`; absent when `to` is empty
// and it goes.
[[nodiscard]] inline std::optional<std::string> moved(std::string_view tag, std::string_view from,
                                                      std::string_view to) {
  if (!isOrIsBelow(tag, from)) return std::string(tag);
  if (to.empty()) return std::nullopt;
  return std::string(to) + std::string(tag.substr(from.size()));
}

}  // namespace TagNames

}  // namespace nomely
