#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace nomely {

// Text is UTF-8. Functions that take a string_view expect well-formed UTF-8 unless they say
// otherwise; a malformed byte counts as one character of no class and is kept as it is. All are
// pure and safe on any thread.

// Whether `bytes` are well-formed UTF-8 (RFC 3629: no surrogates, no overlong forms).
[[nodiscard]] bool isValidUtf8(std::string_view bytes);

struct DecodedCharacter {
  char32_t value = 0;  // U+FFFD for a malformed byte
  std::size_t length = 1;
};
// The character that starts at `text[0]`; `text` must not be empty.
[[nodiscard]] DecodedCharacter decodeFirst(std::string_view text);
void appendUtf8(std::string& text, char32_t character);

// Tab and Unicode category Zs (the ideographic space included): "white space" where line breaks
// are not named.
[[nodiscard]] bool isHorizontalSpace(char32_t character);
// U+000A to U+000D, U+0085, U+2028, U+2029.
[[nodiscard]] bool isLineBreak(char32_t character);

// The two kinds of white space together; what "\s" matches in an expression.
[[nodiscard]] bool isSpaceOrBreak(char32_t character);
// Decimal digits of any script, Unicode category Nd; what "\d" matches in an expression.
[[nodiscard]] bool isDecimalDigit(char32_t character);
// Whether "\b" matches in an expression between a letter or digit and `rest`.
[[nodiscard]] bool endsWord(std::string_view rest);
// Simple case folding: one character for one.
[[nodiscard]] char32_t foldedCase(char32_t character);

// Unicode categories L* and N*.
[[nodiscard]] bool isLetterOrNumber(char32_t character);
// Unicode categories M*: marks that combine with the letter before them.
[[nodiscard]] bool isMark(char32_t character);
// Whether "\b" in an expression does not match between a letter and the `character` after it.
[[nodiscard]] bool continuesWord(char32_t character);

// `text` without leading and trailing horizontal space.
[[nodiscard]] std::string_view trimHorizontal(std::string_view text);
// `text` without leading and trailing horizontal space and line breaks.
[[nodiscard]] std::string_view trimSpaceAndBreaks(std::string_view text);

// Malformed input becomes U+FFFD.
[[nodiscard]] std::u16string toUtf16(std::string_view text);
[[nodiscard]] std::string toUtf8(std::u16string_view text);

// Extended grapheme clusters (UAX #29): the characters that a reader counts.
[[nodiscard]] std::size_t graphemeCount(std::string_view text);
// The same, but at most `most`: counting stops there.
[[nodiscard]] std::size_t graphemeCountUpTo(std::string_view text, std::size_t most);
// The end of each cluster as an offset in UTF-16 units, ascending.
[[nodiscard]] std::vector<std::size_t> graphemeEnds(std::u16string_view text);
// The first `count` clusters; the whole text when it has fewer.
[[nodiscard]] std::string_view graphemePrefix(std::string_view text, std::size_t count);
// The offset `count` clusters before or after `offset`, at most the start or end of the text. An
// `offset` inside a cluster first moves to that cluster's start (before) or end (after), which is
// not counted.
[[nodiscard]] std::size_t graphemesBefore(std::string_view text, std::size_t offset,
                                          std::size_t count);
[[nodiscard]] std::size_t graphemesAfter(std::string_view text, std::size_t offset,
                                         std::size_t count);

// Columns that `text` takes on a terminal: two for wide East Asian characters and emoji.
[[nodiscard]] std::size_t displayWidth(std::string_view text);

}  // namespace nomely
