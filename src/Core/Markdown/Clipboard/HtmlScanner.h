#pragma once

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace nomely {

// Finds elements in HTML of any quality. Each call returns all matches, in order, of the expression
// above it under (?is), in time linear in the text: the expression itself needs quadratic time for
// tags that are never closed. Texts are well-formed UTF-8; the results are views of them. Pure.
namespace HtmlScanner {

// In lower case; the expressions write them as alternatives.
struct Names : std::span<const std::string_view> {
  Names(std::initializer_list<std::string_view> list) : span(list.begin(), list.size()) {}
  explicit Names(std::span<const std::string_view> list) : span(list) {}
};

// What the name of a closing tag has to be.
enum class Closing { sameName, anyOfTheNames };

struct Element {
  std::string_view whole;
  std::string_view content;
  std::size_t name = 0;  // its place among the names
};
// <(names)\b[^>]*>(.*?)</\1>, or for anyOfTheNames <(names)\b[^>]*>(.*?)</(names)>
[[nodiscard]] std::vector<Element> elements(std::string_view text, Names names,
                                            Closing closing = Closing::sameName);

// Start tags: <(names)\b[^>]*>. All tags: </?(names)\b[^>]*>
enum class TagKind { startTags, allTags };
[[nodiscard]] std::vector<std::string_view> tags(std::string_view text, Names names, TagKind kind);

// <[^>]+>
[[nodiscard]] std::vector<std::string_view> anyTags(std::string_view text);
// <br\s*/?>
[[nodiscard]] std::vector<std::string_view> lineBreaks(std::string_view text);

// The offset of the first </name>.
[[nodiscard]] std::optional<std::size_t> closingTag(std::string_view text, std::string_view name);

struct Link {
  std::string_view whole;
  std::string_view address;
  std::string_view label;
};
// <a\b[^>]*href\s*=\s*["']([^"']+)["'][^>]*>(.*?)</a>
[[nodiscard]] std::vector<Link> links(std::string_view text);

// Group 1 of the first match of class\s*=\s*["'][^"']*language-([A-Za-z0-9_+-]+); empty without.
[[nodiscard]] std::string_view codeLanguage(std::string_view text);

// The end of what `name`, in lower case, matches at `at`; absent when it does not.
[[nodiscard]] std::optional<std::size_t> matchName(std::string_view text, std::size_t at,
                                                   std::string_view name);

}  // namespace HtmlScanner

}  // namespace nomely
