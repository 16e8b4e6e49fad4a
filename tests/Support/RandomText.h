#pragma once

#include <array>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Text/RegularExpression.h"
#include "Platform/Text/Unicode.h"
#include "Support/Matchers.h"

namespace nomely::test {

// The pieces of a list, which "¦" parts: "a¦ ¦\n".
[[nodiscard]] inline std::vector<std::string> piecesOf(std::string_view list) {
  constexpr std::string_view mark = "¦";
  std::vector<std::string> pieces;
  for (std::size_t end = list.find(mark); end != std::string_view::npos; end = list.find(mark)) {
    pieces.emplace_back(list.substr(0, end));
    list.remove_prefix(end + mark.size());
  }
  pieces.emplace_back(list);
  return pieces;
}

// The same list as rows of a table: rowsOf<2>("a¦b¦c¦d").
template <std::size_t width>
[[nodiscard]] std::vector<std::array<std::string, width>> rowsOf(std::string_view list) {
  const std::vector<std::string> pieces = piecesOf(list);
  EXPECT_EQ(pieces.size() % width, 0U);
  std::vector<std::array<std::string, width>> rows(pieces.size() / width);
  for (std::size_t i = 0; i < rows.size() * width; ++i) rows[i / width][i % width] = pieces[i];
  return rows;
}

// `piece` over and over, `size` bytes or a little more.
[[nodiscard]] inline std::string filledWith(std::string_view piece, std::size_t size) {
  std::string text;
  while (text.size() < size) text += piece;
  return text;
}

[[nodiscard]] inline std::string repeated(std::string_view piece, std::size_t count) {
  return filledWith(piece, piece.size() * count);
}

// Calls `check(text)` with texts of fewer than `most` pieces of the list, the same on every run.
template <typename Check>
void onRandomTexts(std::string_view list, std::size_t most, int rounds, Check check) {
  const std::vector<std::string> pieces = piecesOf(list);
  std::mt19937 random(1);
  for (; rounds > 0 && !testing::Test::HasFatalFailure(); --rounds) {
    std::string text;
    for (std::size_t count = random() % most; count > 0; --count)
      text += pieces[random() % pieces.size()];
    SCOPED_TRACE(testing::PrintToString(text));
    check(text);
  }
}

// The part of a text that a group matched.
[[nodiscard]] inline std::string partOf(const std::u16string& text,
                                        const std::optional<TextRange>& range) {
  return toUtf8(text.substr(range->begin, range->length()));
}

using Groups = std::vector<std::string>;

// The matches of an expression in a text: where each begins, and what the groups asked for matched.
[[nodiscard]] inline std::vector<Groups> groupsOf(const RegularExpression& expression,
                                                  std::string_view text,
                                                  const std::vector<std::size_t>& wanted) {
  const std::u16string units = toUtf16(text);
  std::vector<Groups> all;
  for (const auto& match : expression.matches(units)) {
    Groups& groups = all.emplace_back(Groups{std::to_string(match.whole().begin)});
    for (const std::size_t group : wanted) groups.push_back(partOf(units, match.groups[group]));
  }
  return all;
}

}  // namespace nomely::test
