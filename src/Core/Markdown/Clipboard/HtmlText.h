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
// `text` with "<" → hiddenLess and "&" → hiddenAnd.
[[nodiscard]] std::string hidingMarkup(std::string text);
// The inverse: hiddenLess → "<", hiddenAnd → "&".
[[nodiscard]] std::string showingMarkup(std::string text);

// Decodes &nbsp; &amp; &lt; &gt; &quot; and decimal numbers: "&#20013; &gt; 1" → "中 > 1". "&amp;"
// is decoded first, so "&amp;gt;" → ">". A decoded "<" becomes `less`.
[[nodiscard]] std::string decodeEntities(std::string_view text, char less = '<');

[[nodiscard]] std::string withoutTags(std::string_view text);
// "a<br><b>1</b> &gt; 0 " → "a\n1 > 0": <br> becomes a line feed, tags go, entities are decoded
// with "<" as hiddenLess, and the ends are trimmed.
[[nodiscard]] std::string labelText(std::string_view html);

// Trims each line, makes one empty line of several, and drops those at both ends of the text.
[[nodiscard]] std::string normalizeBlankLines(std::string_view text);

// "a\nb" with the prefix "> " → "> a\n> b".
[[nodiscard]] std::string prefixingLines(std::string_view text, std::string_view prefix);

}  // namespace HtmlText

}  // namespace nomely
