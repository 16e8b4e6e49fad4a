#include "Core/Markdown/Text/MemoTextUtilities.h"

#include <algorithm>

#include "Platform/Text/Base64.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

// By hand rather than by expressions: those give up on long texts, and then the older text would
// be lost with the next save.

constexpr auto npos = std::string_view::npos;
constexpr std::string_view opening = "<!-- original";
constexpr std::string_view encodedOpening = "<!-- original-base64:";
constexpr std::string_view plainOpening = "<!-- original:";
constexpr std::string_view rule = "---\n";
constexpr std::string_view closing = "-->";

std::optional<std::string> encodedOriginal(std::string_view text) {
  constexpr std::string_view alphabet =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";
  for (std::size_t at = text.find(encodedOpening); at != npos; at = text.find(encodedOpening)) {
    text.remove_prefix(at + encodedOpening.size());
    const std::size_t length = std::min(text.find_first_not_of(alphabet), text.size());
    if (length == 0 || !text.substr(length).starts_with(" -->")) continue;
    auto original = decodeBase64(text.substr(0, length));
    if (original && !isValidUtf8(*original)) original.reset();
    return original;
  }
  return std::nullopt;
}

std::optional<std::string> originalOverLines(std::string_view text) {
  constexpr std::string_view lineOpening = "<!-- original:\n";
  const std::size_t at = text.find(lineOpening);
  if (at == npos) return std::nullopt;
  const std::size_t begin = at + lineOpening.size();
  const std::size_t end = text.find("\n-->", begin);
  if (end == npos) return std::nullopt;
  return std::string(text.substr(begin, end - begin));
}

std::string_view lastLineOf(std::string_view text) {
  std::string_view line = text;
  while (!text.empty()) {
    const DecodedCharacter first = decodeFirst(text);
    text.remove_prefix(first.length);
    if (isLineBreak(first.value)) line = text;
  }
  return line;
}

std::optional<std::string> originalOnOneLine(std::string_view text) {
  for (std::size_t end = text.find(closing); end != npos; end = text.find(closing)) {
    // The first opening mark on the line of the closing one counts.
    std::string_view before = lastLineOf(text.substr(0, end));
    text.remove_prefix(end + closing.size());
    for (std::size_t at = before.find(plainOpening); at != npos; at = before.find(plainOpening)) {
      before.remove_prefix(at + plainOpening.size());
      if (before.size() > 1 && before.ends_with(' '))
        return std::string(before.substr(0, before.size() - 1));
    }
  }
  return std::nullopt;
}

struct Kept {
  std::string_view text;
  std::optional<std::string> original;
};

// A comment that appendOriginal() wrote, and the text above it, which may hold anything: opening
// marks that people write about would make a comment of all that follows them.
std::optional<Kept> keptAtEnd(std::string_view body) {
  constexpr std::string_view written = "\n\n---\n<!-- original-base64:";
  const std::size_t at = body.rfind(written);
  if (at == npos || body.find(closing, at) + closing.size() != body.size()) return std::nullopt;
  auto original = encodedOriginal(body.substr(at));
  if (!original) return std::nullopt;
  return Kept{body.substr(0, at), std::move(original)};
}

}  // namespace

std::string MemoTextUtilities::appendOriginal(std::string_view original, std::string_view text) {
  std::string body(text);
  body.append("\n\n").append(rule).append(encodedOpening);
  return body.append(encodeBase64(original)).append(" -->");
}

std::optional<std::string> MemoTextUtilities::extractOriginal(std::string_view text) {
  if (!hasOriginalComment(text)) return std::nullopt;
  auto original = encodedOriginal(text);
  if (!original) original = originalOverLines(text);
  if (!original) original = originalOnOneLine(text);
  return original;
}

bool MemoTextUtilities::hasOriginalComment(std::string_view text) {
  return text.find(encodedOpening) != npos || text.find(plainOpening) != npos;
}

std::string MemoTextUtilities::stripOriginalComment(std::string_view text) {
  std::string kept;
  std::size_t from = 0;
  for (std::size_t at = text.find(opening); at != npos; at = text.find(opening, at + 1)) {
    const std::string_view comment = text.substr(at);
    if (!comment.starts_with(plainOpening) && !comment.starts_with(encodedOpening)) continue;
    const std::size_t end = text.find(closing, at);
    if (end == npos) break;
    std::string_view before = text.substr(from, at - from);
    if (before.ends_with(rule)) before.remove_suffix(rule.size());
    while (before.ends_with('\n')) before.remove_suffix(1);
    kept += before;
    from = end + closing.size();
    at = from - 1;
  }
  kept += text.substr(from);
  return std::string(trimSpaceAndBreaks(kept));
}

std::string MemoTextUtilities::textForEditing(std::string_view body) {
  if (const auto kept = keptAtEnd(body)) return std::string(trimSpaceAndBreaks(kept->text));
  return extractOriginal(body) ? stripOriginalComment(body) : std::string(body);
}

std::string MemoTextUtilities::editedBody(std::string_view body, std::string_view editedText) {
  const auto kept = keptAtEnd(body);
  const auto original = kept ? kept->original : extractOriginal(body);
  // An editor of the whole text may have left the comment in it.
  const auto left = keptAtEnd(editedText);
  if (!original || (left ? left->original : extractOriginal(editedText)) == original)
    return std::string(editedText);
  return appendOriginal(*original, editedText);
}

std::string MemoTextUtilities::textWithParagraph(std::string_view body,
                                                 std::string_view paragraph) {
  std::string text = textForEditing(body);
  if (!text.empty()) text += text.ends_with('\n') ? "\n" : "\n\n";
  return text.append(paragraph);
}

}  // namespace nomely
