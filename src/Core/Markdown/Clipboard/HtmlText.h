#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace nomely {

// Steps that pasted HTML goes through on its way to plain text. Linear in the text. Pure.
namespace HtmlText {

// `text` with each of `parts`, views of it in order, replaced by what `replacement(part)` gives.
template <typename Part, typename Replacement>
[[nodiscard]] std::string replacing(std::string_view text, const std::vector<Part>& parts,
                                    Replacement replacement) {
  const auto wholeOf = [](const Part& part) -> std::string_view {
    if constexpr (requires { part.whole; })
      return part.whole;
    else
      return part;
  };
  std::string replaced;
  replaced.reserve(text.size());
  const char* copied = text.data();
  for (const Part& part : parts) {
    const std::string_view whole = wholeOf(part);
    replaced.append(copied, whole.data()).append(replacement(part));
    copied = whole.data() + whole.size();
  }
  return replaced.append(copied, text.data() + text.size());
}

// Bytes that no UTF-8 text has. They stand for a "<" and "&" of the text itself, which no later
// step is to take for markup: a decoded "a &lt; b" would lose what follows the "<" with the tags.
constexpr char hiddenLess = '\xFE';
constexpr char hiddenAnd = '\xFF';
// Every "<" and "&" hidden.
[[nodiscard]] std::string hidingMarkup(std::string text);
// The hidden ones as what they stand for.
[[nodiscard]] std::string showingMarkup(std::string text);

// Named characters of HTML itself and decimal numbers; "&amp;" goes first, so what it was hiding is
// decoded too. A "<" that comes out of it becomes `less`.
[[nodiscard]] std::string decodeEntities(std::string_view text, char less = '<');

[[nodiscard]] std::string withoutTags(std::string_view text);
// Breaks as line feeds, no tags, entities decoded, each decoded "<" hidden, trimmed.
[[nodiscard]] std::string labelText(std::string_view html);

// Lines without blanks at their ends, no two empty ones together, none at either end.
[[nodiscard]] std::string normalizeBlankLines(std::string_view text);

// Every line of `text` after `prefix`.
[[nodiscard]] std::string prefixingLines(std::string_view text, std::string_view prefix);

}  // namespace HtmlText

}  // namespace nomely
