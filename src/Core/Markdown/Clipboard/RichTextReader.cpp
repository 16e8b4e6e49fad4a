#include "Core/Markdown/Clipboard/RichTextReader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <map>
#include <vector>

#include "Platform/Text/CodePage.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr std::size_t deepestGroup = 1000;
constexpr int westernCodePage = 1252;

struct CharacterWord {
  std::string_view word;
  char16_t character;
};
constexpr CharacterWord characterWords[] = {
    {"par", u'\n'},         {"line", u'\n'},        {"sect", u'\n'},     {"page", u'\n'},
    {"row", u'\n'},         {"nestrow", u'\n'},     {"tab", u'\t'},      {"cell", u'\t'},
    {"nestcell", u'\t'},    {"emdash", u'—'},       {"endash", u'–'},    {"lquote", u'‘'},
    {"rquote", u'’'},       {"ldblquote", u'“'},    {"rdblquote", u'”'}, {"bullet", u'•'},
    {"emspace", u'\u2003'}, {"enspace", u'\u2002'},
};

// Groups whose text is not the document's. Those marked with \* are skipped as well.
constexpr std::string_view skippedGroups[] = {
    "colortbl",   "stylesheet", "info",   "pict",    "fldinst",  "header",  "headerl",
    "headerr",    "headerf",    "footer", "footerl", "footerr",  "footerf", "filetbl",
    "nonshppict", "private",    "xe",     "tc",      "themedata"};

constexpr struct {
  std::string_view word;
  int codePage;
} characterSets[] = {{"ansi", westernCodePage}, {"mac", 10000}, {"pc", 437}, {"pca", 850}};

// A font's \fcharset as a code page; 0 for those that mean the document's own.
int codePageOfFont(std::int64_t characterSet) {
  constexpr std::array<std::pair<int, int>, 13> known{{{77, 10000},
                                                       {128, 932},
                                                       {129, 949},
                                                       {134, 936},
                                                       {136, 950},
                                                       {161, 1253},
                                                       {162, 1254},
                                                       {163, 1258},
                                                       {177, 1255},
                                                       {178, 1256},
                                                       {186, 1257},
                                                       {204, 1251},
                                                       {238, 1250}}};
  for (const auto& [number, codePage] : known)
    if (number == characterSet) return codePage;
  return 0;
}

bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

struct Damaged {};

class Reader {
 public:
  explicit Reader(std::string_view rtf) : rest_(rtf) {}

  // Throws Damaged.
  std::u16string read() {
    do {
      const char next = take();
      if (next == '{')
        open();
      else if (next == '}')
        close();
      else if (next == '\\')
        readControl();
      else if (next != '\r' && next != '\n')
        addByte(next);
    } while (!groups_.empty());
    return std::move(text_);
  }

 private:
  struct Group {
    std::int64_t fallbackLength = 1;  // characters after \u for readers that don't know it
    std::int64_t font = -1;
    bool isSkipped = false;
    bool isFontTable = false;
  };

  char take() {
    if (rest_.empty()) throw Damaged();
    const char next = rest_.front();
    rest_.remove_prefix(1);
    return next;
  }

  void open() {
    flush();
    fallbackLeft_ = 0;
    if (groups_.size() == deepestGroup) throw Damaged();
    groups_.push_back(groups_.empty() ? Group() : groups_.back());
  }

  void close() {
    flush();
    fallbackLeft_ = 0;
    groups_.pop_back();
  }

  void readControl() {
    const char first = take();
    if (isLetter(first)) return readWord(first);
    if (first == '\'') return addByte(readHexByte());
    if (first == '\\' || first == '{' || first == '}') return addByte(first);
    if (passFallback()) return;
    if (first == '*')
      groups_.back().isSkipped = true;
    else if (first == '~')
      addUnit(u'\u00A0');
    else if (first == '_')
      addUnit(u'\u2011');
    else if (first == '\n' || first == '\r')
      addUnit(u'\n');
  }

  char readHexByte() {
    constexpr int base = 16;
    const std::string_view digits = rest_.substr(0, 2);
    unsigned value = 0;
    const auto [stop, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), value, base);
    if (error != std::errc() || stop != digits.data() + 2) throw Damaged();
    rest_.remove_prefix(2);
    return static_cast<char>(value);
  }

  void readWord(char first) {
    std::string word(1, first);
    while (!rest_.empty() && isLetter(rest_.front())) word += take();
    std::optional<std::int64_t> number;
    std::int64_t value = 0;
    const auto [stop, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), value);
    // Too many digits are passed over, and the word has no number.
    if (error == std::errc()) number = value;
    rest_.remove_prefix(static_cast<std::size_t>(stop - rest_.data()));
    if (rest_.starts_with(' ')) rest_.remove_prefix(1);
    if (word == "bin") skipBinary(number.value_or(0));
    if (!passFallback()) handleWord(word, number);
  }

  void skipBinary(std::int64_t length) {
    if (length < 0 || static_cast<std::uint64_t>(length) > rest_.size()) throw Damaged();
    rest_.remove_prefix(static_cast<std::size_t>(length));
  }

  void handleWord(std::string_view word, std::optional<std::int64_t> number) {
    Group& group = groups_.back();
    const auto isWord = [&](const auto& each) { return each.word == word; };
    if (const auto* known = std::ranges::find_if(characterWords, isWord);
        known != std::end(characterWords))
      return addUnit(known->character);
    if (word == "u" && number) return addUnicode(*number);
    flush();
    if (std::ranges::find(skippedGroups, word) != std::end(skippedGroups))
      group.isSkipped = true;
    else if (word == "uc" && number)
      group.fallbackLength = std::max<std::int64_t>(*number, 0);
    else if (word == "fonttbl")
      group.isSkipped = group.isFontTable = true;
    else if (word == "f" && number)
      group.font = *number;
    else if (word == "plain")
      group.font = defaultFont_;
    else if (word == "deff" && number)
      group.font = defaultFont_ = *number;
    else if (word == "fcharset" && number && group.isFontTable)
      fonts_[group.font] = codePageOfFont(*number);
    else if (word == "ansicpg" && number && *number > 0 && *number <= 0xFFFF)
      documentCodePage_ = static_cast<int>(*number);
    else if (const auto* set = std::ranges::find_if(characterSets, isWord);
             set != std::end(characterSets))
      documentCodePage_ = set->codePage;
  }

  // Whether what was just read stands in for a character given as \u before it.
  bool passFallback() {
    if (fallbackLeft_ == 0) return false;
    --fallbackLeft_;
    return true;
  }

  void addByte(char byte) {
    if (!passFallback() && !groups_.back().isSkipped) bytes_ += byte;
  }

  void addUnit(char16_t unit) {
    flush();
    if (!groups_.back().isSkipped) text_ += unit;
  }

  void addUnicode(std::int64_t number) {
    constexpr std::int64_t lowest = -0x8000;
    constexpr std::int64_t highest = 0xFFFF;
    // Larger numbers are written as signed ones of 16 bits. What is none is left to its fallback.
    if (number < lowest || number > highest) return;
    addUnit(static_cast<char16_t>(static_cast<std::uint64_t>(number) & 0xFFFFU));
    fallbackLeft_ = groups_.back().fallbackLength;
  }

  // Bytes are decoded together: a character may be of two, of which the second looks like a letter.
  void flush() {
    if (bytes_.empty()) return;
    const auto isAscii = [](char byte) { return static_cast<unsigned char>(byte) < 0x80; };
    if (std::ranges::all_of(bytes_, isAscii))
      text_.append(bytes_.begin(), bytes_.end());
    else
      text_ += decoder().decode(bytes_);
    bytes_.clear();
  }

  CodePage& decoder() {
    const auto font = fonts_.find(groups_.back().font);
    const int wanted = font == fonts_.end() || font->second == 0 ? documentCodePage_ : font->second;
    if (!decoder_ || decoderNumber_ != wanted) {
      decoder_.emplace(wanted);
      decoderNumber_ = wanted;
    }
    return *decoder_;
  }

  std::string_view rest_;
  std::vector<Group> groups_;
  std::string bytes_;  // text not decoded yet
  std::u16string text_;
  std::int64_t fallbackLeft_ = 0;
  std::map<std::int64_t, int> fonts_;
  std::int64_t defaultFont_ = -1;
  int documentCodePage_ = westernCodePage;
  std::optional<CodePage> decoder_;
  int decoderNumber_ = 0;
};

}  // namespace

bool RichTextReader::isRichText(std::string_view bytes) {
  return bytes.starts_with("{\\rtf");
}

std::optional<std::string> RichTextReader::plainText(std::string_view rtf) {
  if (!isRichText(rtf)) return std::nullopt;
  try {
    return toUtf8(Reader(rtf).read());
  } catch (const Damaged&) {
    return std::nullopt;
  }
}

}  // namespace nomely
