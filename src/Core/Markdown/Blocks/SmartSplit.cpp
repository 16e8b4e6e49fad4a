#include "Core/Markdown/Blocks/SmartSplit.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

#include "Core/Markdown/Blocks/LineRules.h"
#include "Platform/Text/RegularExpression.h"
#include "Platform/Text/Replacing.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr auto npos = std::string_view::npos;
// Stands for the blank inside a colour, whose number sign must not be taken for a tag's.
constexpr std::string_view protectedColor = "color:§#";

// Places in a line where it may be cut: pieces end at `begin` and go on at `end`.
struct Cut {
  std::size_t begin = 0;
  std::size_t end = 0;
};
struct Cuts {
  // (?=\d{4}[.\-/]\d{1,2}[.\-/]\d{1,2}\b|(?<=\S)\s+(?=\d+[、\.]\s)|(?<=\S)\s+(?=Q\d+[：:])|
  //    (?<=\S)\s+(?=Day\d+\s)|(?<=\S)\s+(?=#\S))
  std::vector<Cut> marks;
  // (?<=[。！？…」』）\)])(?:\s{2,}|\s+(?=[^\s]))
  std::vector<Cut> sentences;
  // (?<=.)(?=\d+[、\.]\s)
  std::vector<Cut> items;
};

bool startsWithSpace(std::string_view text) {
  return !text.empty() && isSpaceOrBreak(decodeFirst(text).value);
}

// Whether `rest`, which follows the digits of an item, begins with [、\.]\s.
bool endsItemNumber(std::string_view rest) {
  for (const std::string_view mark : {".", "、"})
    if (rest.starts_with(mark)) return startsWithSpace(rest.substr(mark.size()));
  return false;
}

// Whether `text` begins with one of the marks that need white space before them.
bool beginsMark(std::string_view text) {
  if (text.empty()) return false;
  if (text.front() == '#') return text.size() > 1 && !startsWithSpace(text.substr(1));
  if (text.starts_with("Day")) {
    const std::size_t digits = LineRules::digitsLength(text.substr(3));
    return digits > 0 && startsWithSpace(text.substr(3 + digits));
  }
  if (text.front() == 'Q') {
    const std::size_t digits = LineRules::digitsLength(text.substr(1));
    const std::string_view rest = text.substr(1 + digits);
    return digits > 0 && (rest.starts_with(':') || rest.starts_with("："));
  }
  const std::size_t digits = LineRules::digitsLength(text);
  return digits > 0 && endsItemNumber(text.substr(digits));
}

bool endsSentence(std::string_view before) {
  constexpr std::array<std::string_view, 7> marks{"。", "！", "？", "…", "」", "』", "）"};
  return before.ends_with(')') ||
         std::ranges::any_of(marks, [&](auto mark) { return before.ends_with(mark); });
}

// How far to go on from a byte: 0 for one that can begin white space or a digit.
constexpr std::array<std::uint8_t, 256> stepsByByte() {
  std::array<std::uint8_t, 256> steps{};
  for (std::size_t byte = 0; byte < steps.size(); ++byte) {
    const bool isIdeograph = byte >= 0xE4 && byte <= 0xE9;
    const bool isInteresting = (byte >= 0x09 && byte <= 0x0D) || byte == ' ' ||
                               (byte >= '0' && byte <= '9') || (byte >= 0xC2 && !isIdeograph);
    if (!isInteresting) steps[byte] = isIdeograph ? 3 : 1;
  }
  return steps;
}

// One way through a line, from one run of white space or digits to the next.
class LineScanner {
 public:
  explicit LineScanner(std::string_view text) : text_(text) {}

  Cuts scan() {
    static constexpr std::array<std::uint8_t, 256> steps = stepsByByte();
    while (at_ < text_.size()) {
      const auto byte = static_cast<unsigned char>(text_[at_]);
      const std::size_t step = steps[byte] != 0 ? steps[byte] : lengthOfCommonMark(byte);
      if (step != 0) {
        at_ += step;
        continue;
      }
      const DecodedCharacter first = decodeFirst(text_.substr(at_));
      if (isSpaceOrBreak(first.value))
        passSpace();
      else if (isDecimalDigit(first.value))
        passDigits();
      else
        at_ += first.length;
    }
    return std::move(cuts_);
  }

 private:
  [[nodiscard]] unsigned char byteAt(std::size_t place) const {
    return place < text_.size() ? static_cast<unsigned char>(text_[place]) : 0;
  }

  // Bytes of what shares its first byte with white space or digits but is neither, or is a blank
  // between words where nothing can be cut; 0 when a closer look is needed.
  [[nodiscard]] std::size_t lengthOfCommonMark(unsigned char byte) const {
    const unsigned char second = byteAt(at_ + 1);
    if (byte == ' ') {
      const unsigned char before = at_ == 0 ? 0 : byteAt(at_ - 1);
      const bool isWordBehind =
          (second >= 'a' && second <= 'z') || (second >= 0xE4 && second <= 0xE9);
      return isWordBehind && before > ' ' && before < 0x7F && before != ')' ? 1 : 0;
    }
    const unsigned char third = byteAt(at_ + 2);
    if (third < 0x80) return 0;
    if (byte == 0xE3) return second == 0x80 && third == 0x80 ? 0 : 3;
    if (byte == 0xEF) return second == 0xBC && (third < 0x90 || third > 0x99) ? 3 : 0;
    return byte == 0xE2 && second == 0x80 && third >= 0x90 && third <= 0xA7 ? 3 : 0;
  }

  void passSpace() {
    const std::size_t begin = at_;
    std::size_t count = 0;
    while (at_ < text_.size()) {
      const DecodedCharacter next = decodeFirst(text_.substr(at_));
      if (!isSpaceOrBreak(next.value)) break;
      at_ += next.length;
      ++count;
    }
    if (begin == 0) return;
    if (beginsMark(text_.substr(at_))) cuts_.marks.push_back({begin, at_});
    if ((count > 1 || at_ < text_.size()) && endsSentence(text_.substr(0, begin)))
      cuts_.sentences.push_back({begin, at_});
  }

  void passDigits() {
    // Where the last four begin, the newest last.
    std::array<std::size_t, 4> last{};
    const std::size_t begin = at_;
    std::size_t count = 0;
    while (at_ < text_.size()) {
      const DecodedCharacter next = decodeFirst(text_.substr(at_));
      if (!isDecimalDigit(next.value)) break;
      std::ranges::rotate(last, last.begin() + 1);
      last.back() = at_;
      at_ += next.length;
      ++count;
    }
    if (count >= last.size() && LineRules::beginsWithDate(text_.substr(last.front())))
      cuts_.marks.push_back({last.front(), last.front()});
    if (endsItemNumber(text_.substr(at_))) addItems(begin);
  }

  // Cuts before each digit, as each begins a number, but not right after a line break.
  void addItems(std::size_t begin) {
    for (std::size_t digit = begin; digit < at_; digit += decodeFirst(text_.substr(digit)).length)
      if (digit > 0 && !(digit == begin && endsWithLineBreak(text_.substr(0, digit))))
        cuts_.items.push_back({digit, digit});
  }

  static bool endsWithLineBreak(std::string_view before) {
    constexpr std::array<std::string_view, 7> breaks{"\n",     "\v",     "\f",    "\r",
                                                     "\u0085", "\u2028", "\u2029"};
    return std::ranges::any_of(breaks, [&](auto one) { return before.ends_with(one); });
  }

  std::string_view text_;
  std::size_t at_ = 0;
  Cuts cuts_;
};

// What lies between the cuts, trimmed, without the empty pieces.
std::vector<std::string_view> piecesOf(std::string_view text, const std::vector<Cut>& cuts) {
  std::vector<std::string_view> pieces;
  pieces.reserve(cuts.size() + 1);
  std::size_t begin = 0;
  const auto add = [&](std::size_t end) {
    const std::string_view piece = trimSpaceAndBreaks(text.substr(begin, end - begin));
    if (!piece.empty()) pieces.push_back(piece);
  };
  for (const Cut& cut : cuts) {
    add(cut.begin);
    begin = cut.end;
  }
  add(text.size());
  return pieces;
}

std::vector<SplitSegment> whole(std::string_view text) {
  return {{SplitSegment::Kind::paragraph, std::string(text)}};
}

// With fewer than two cuts or three pieces the text is no list.
std::vector<SplitSegment> paragraphs(std::string_view text, const std::vector<Cut>& cuts) {
  constexpr std::size_t leastCuts = 2;
  constexpr std::size_t leastPieces = 3;
  if (cuts.size() < leastCuts) return whole(text);
  const std::vector<std::string_view> pieces = piecesOf(text, cuts);
  if (pieces.size() < leastPieces) return whole(text);
  std::vector<SplitSegment> segments;
  segments.reserve(pieces.size());
  for (const std::string_view piece : pieces)
    segments.push_back({SplitSegment::Kind::paragraph, std::string(piece)});
  return segments;
}

std::vector<SplitSegment> numberedItems(std::string_view text, const std::vector<Cut>& cuts) {
  constexpr std::size_t leastCharacters = 11;
  if (cuts.empty() || graphemeCountUpTo(text, leastCharacters) < leastCharacters)
    return whole(text);
  return paragraphs(text, cuts);
}

std::optional<std::string> withProtectedColors(std::string_view text) {
  if (text.find('#') == npos || text.find("color:") == npos) return std::nullopt;
  static const RegularExpression color(R"(color:\s*(#[0-9A-Fa-f]{6}))");
  return toUtf8(color.replacingMatches(toUtf16(text), u"color:§$1"));
}

std::vector<SplitSegment> classified(const std::vector<std::string_view>& pieces) {
  std::vector<SplitSegment> segments;
  segments.reserve(pieces.size());
  for (const std::string_view piece : pieces)
    segments.push_back(
        piece.find(protectedColor) == npos
            ? SmartSplit::classifySegment(piece)
            : SmartSplit::classifySegment(replacingAll(piece, protectedColor, "color: #")));
  return segments;
}

}  // namespace

std::vector<SplitSegment> SmartSplit::smartSplit(std::string_view text) {
  const auto colored = withProtectedColors(text);
  const std::string_view scanned = colored ? *colored : text;
  Cuts cuts = LineScanner(scanned).scan();
  if (!cuts.marks.empty()) {
    const auto pieces = piecesOf(scanned, cuts.marks);
    if (pieces.size() > 1) return classified(pieces);
  }
  if (colored) cuts = LineScanner(text).scan();
  std::vector<SplitSegment> segments = paragraphs(text, cuts.sentences);
  return segments.size() > 1 ? segments : numberedItems(text, cuts.items);
}

SplitSegment SmartSplit::classifySegment(std::string_view text) {
  using enum SplitSegment::Kind;
  const auto hasNumberBehind = [&](std::string_view word) {
    return text.starts_with(word) && LineRules::digitsLength(text.substr(word.size())) > 0;
  };
  if (LineRules::dateLength(text) > 0) {
    const std::size_t feed = std::min(text.find('\n'), text.size());
    std::string heading(trimHorizontal(text.substr(0, feed)));
    const std::string_view rest = trimSpaceAndBreaks(text.substr(feed));
    if (!rest.empty()) heading.append("\n").append(rest);
    return {SplitSegment::Kind::heading, std::move(heading)};
  }
  if (hasNumberBehind("Day")) return {heading, std::string(text)};
  if (hasNumberBehind("Q")) return {bulletItem, std::string(text)};
  // ^\[.+\]
  if (text.starts_with('[')) {
    const std::size_t last = text.substr(0, LineRules::lengthToLineBreak(text)).rfind(']');
    if (last != npos && last >= 2) return {heading, std::string(text)};
  }
  return {paragraph, std::string(text)};
}

std::vector<SplitSegment> SmartSplit::splitChineseParagraphs(std::string_view text) {
  return paragraphs(text, LineScanner(text).scan().sentences);
}

std::vector<SplitSegment> SmartSplit::splitNumberedItems(std::string_view text) {
  return numberedItems(text, LineScanner(text).scan().items);
}

bool SmartSplit::shouldPreserveShortLineParagraphs(std::span<const std::string_view> lines) {
  constexpr std::size_t shortLine = 31;
  constexpr std::size_t shortSentence = 37;
  constexpr std::array<std::string_view, 7> sentenceEnds{"。", "！", "？", "!", "?", "…", "."};
  std::size_t count = 0;
  for (const std::string_view line : lines) {
    const std::string_view trimmed = trimSpaceAndBreaks(line);
    if (trimmed.empty()) continue;
    ++count;
    // No line has more characters than bytes.
    if (trimmed.size() < shortLine) continue;
    const std::size_t length = graphemeCountUpTo(trimmed, shortSentence);
    const bool isSentence =
        std::ranges::any_of(sentenceEnds, [&](auto end) { return trimmed.ends_with(end); });
    if (length >= shortSentence || (length >= shortLine && !isSentence)) return false;
  }
  return count > 1;
}

}  // namespace nomely
