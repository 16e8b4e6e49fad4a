#include "AI/Voice/SpeechPieces.h"

#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

bool endsSentence(char32_t character) {
  constexpr std::u32string_view ends = U"。！？；…!?;";
  return ends.find(character) != std::u32string_view::npos;
}

// What stays with the sentence before it: “好。”
bool closes(char32_t character) {
  constexpr std::u32string_view closing = U"”’」』）)】》\"'";
  return closing.find(character) != std::u32string_view::npos;
}

// Where to cut `window`, which more text follows: its length when there is no better place. The
// places are ends of characters, since nothing joins to what is looked for.
std::size_t cutIn(std::string_view window) {
  std::size_t afterBreak = 0;
  std::size_t afterSentence = 0;
  bool isEnded = false;
  for (std::size_t at = 0; at < window.size();) {
    const DecodedCharacter character = decodeFirst(window.substr(at));
    const std::string_view rest = window.substr(at + character.length);
    const bool isPoint = character.value == '.' && !rest.empty() && rest.front() == ' ';
    isEnded = endsSentence(character.value) || isPoint || (isEnded && closes(character.value));
    at += character.length;
    if (isLineBreak(character.value)) afterBreak = at;
    if (isEnded) afterSentence = at;
  }
  if (afterBreak > 0) return afterBreak;
  return afterSentence > 0 ? afterSentence : window.size();
}

}  // namespace

std::vector<std::string> speechPieces(std::string_view text, std::size_t most) {
  std::vector<std::string> pieces;
  std::string_view rest = trimSpaceAndBreaks(text);
  while (!rest.empty()) {
    const std::string_view window = graphemePrefix(rest, most);
    const std::size_t cut = window.size() == rest.size() ? rest.size() : cutIn(window);
    const std::string_view piece = trimSpaceAndBreaks(rest.substr(0, cut));
    if (!piece.empty()) pieces.emplace_back(piece);
    rest = trimSpaceAndBreaks(rest.substr(cut));
  }
  return pieces;
}

}  // namespace nomely
