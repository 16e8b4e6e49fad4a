#include "Core/Markdown/Text/MemoTextSanitizer.h"

#include <array>
#include <optional>

#include "Platform/Text/Replacing.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

// By hand rather than by expressions: those look at a row of blanks anew from each of them, and
// give up on long ones.

constexpr auto npos = std::string_view::npos;
constexpr std::string_view objectReplacement = "\uFFFC";
constexpr std::array<std::string_view, 6> markOpenings{"[Image", "[Attachment", "[File",
                                                       "[图片",  "[图像",       "[附件"};

template <typename Belongs>
std::size_t skip(std::string_view text, std::size_t at, Belongs belongs) {
  while (at < text.size()) {
    const DecodedCharacter next = decodeFirst(text.substr(at));
    if (!belongs(next.value)) break;
    at += next.length;
  }
  return at;
}

bool isBlank(char32_t character) {
  return character == ' ' || character == '\t';
}

// The end of \[(?:Image|Attachment|File|图片|图像|附件)\s*#\d+\] at `at`.
std::optional<std::size_t> markEnd(std::string_view text, std::size_t at) {
  for (const std::string_view opening : markOpenings) {
    if (!text.substr(at).starts_with(opening)) continue;
    const std::size_t sign = skip(text, at + opening.size(), isSpaceOrBreak);
    if (!text.substr(sign).starts_with('#')) return std::nullopt;
    const std::size_t end = skip(text, sign + 1, isDecimalDigit);
    if (end == sign + 1 || !text.substr(end).starts_with(']')) return std::nullopt;
    return end + 1;
  }
  return std::nullopt;
}

bool endsLine(std::string_view text) {
  return text.empty() || isLineBreak(static_cast<unsigned char>(text.back())) ||
         text.ends_with("\u0085") || text.ends_with("\u2028") || text.ends_with("\u2029");
}

enum class Where { atLineStart, anywhere };

// Without each mark and the blanks around it; with one at the start of a line, the line break that
// follows it goes too.
std::string withoutMarks(std::string_view text, Where where) {
  std::string kept;
  std::size_t copied = 0;
  for (std::size_t at = text.find('['); at != npos; at = text.find('[', at + 1)) {
    const auto mark = markEnd(text, at);
    if (!mark) continue;
    std::size_t begin = at;
    while (begin > copied && isBlank(static_cast<unsigned char>(text[begin - 1]))) --begin;
    if (where == Where::atLineStart && !endsLine(text.substr(0, begin))) continue;
    std::size_t end = skip(text, *mark, isBlank);
    if (where == Where::atLineStart)
      for (const std::string_view feed : {"\r\n", "\n"})
        if (text.substr(end).starts_with(feed)) {
          end += feed.size();
          break;
        }
    kept.append(text.substr(copied, begin - copied));
    copied = end;
    at = end - 1;
  }
  return kept.append(text.substr(copied));
}

}  // namespace

std::string MemoTextSanitizer::removingAttachmentPlaceholders(std::string_view text, Edges edges) {
  std::string cleaned = replacingAll(text, objectReplacement, "");
  if (cleaned.find('[') != npos)
    cleaned = withoutMarks(withoutMarks(cleaned, Where::atLineStart), Where::anywhere);
  return edges == Edges::trim ? std::string(trimSpaceAndBreaks(cleaned)) : cleaned;
}

}  // namespace nomely
