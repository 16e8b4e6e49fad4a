#include "Core/Lifecycle/Settling/ConflictMarkers.h"

#include <array>

#include "Core/Markdown/Frontmatter/MemoFileParts.h"
#include "Platform/Text/LineEnds.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr std::size_t markLength = 7;

std::string_view withoutLineEnd(std::string_view line) {
  if (line.ends_with('\n')) line.remove_suffix(1);
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

// Seven of them and a label. Longer ones are of blocks inside a common ancestor.
bool isMark(std::string_view line, char mark) {
  line = withoutLineEnd(line);
  return line.starts_with(std::string(markLength, mark)) &&
         (line.size() == markLength || line[markLength] == ' ');
}

class Reader {
 public:
  // Returns false when the line stands where it can't.
  bool read(std::string_view line) {
    if (isMark(line, '<')) return begin();
    if (isMark(line, '>')) return end();
    if (place_ != Place::common && isMark(line, '|')) return turn(Place::ours, Place::ancestor);
    if (place_ != Place::common && isMark(line, '='))
      return turn(place_ == Place::ancestor ? Place::ancestor : Place::ours, Place::theirs);
    if (place_ == Place::common || place_ == Place::ours) add(line, sides_[0]);
    if (place_ == Place::common || place_ == Place::theirs) add(line, sides_[1]);
    return true;
  }

  // Absent when a block is open, or there was none.
  [[nodiscard]] std::optional<ConflictMarkers> result() {
    if (!found_ || place_ != Place::common) return std::nullopt;
    return ConflictMarkers{std::move(sides_[0].text), std::move(sides_[1].text), touchHeader_,
                           areInCode_};
  }

 private:
  enum class Place { common, ours, ancestor, theirs };
  struct Side {
    std::string text;
    bool isInHeader = true;
    bool isInCode = false;
  };

  bool begin() {
    if (!turn(Place::common, Place::ours)) return false;
    found_ = true;
    for (const Side& side : sides_) {
      touchHeader_ = touchHeader_ || side.isInHeader;
      areInCode_ = areInCode_ || side.isInCode;
    }
    return true;
  }

  bool end() { return turn(Place::theirs, Place::common); }

  bool turn(Place from, Place to) {
    if (place_ != from) return false;
    place_ = to;
    return true;
  }

  static void add(std::string_view line, Side& side) {
    const bool isFirst = side.text.empty();
    side.text += line;
    const std::string_view text = withoutLineEnd(isFirst ? withoutByteOrderMark(line) : line);
    if (side.isInHeader)
      // The first line opens the header, and what doesn't open one there is a file without any.
      side.isInHeader = isFirst == (trimHorizontal(text) == MemoFileParts::fence);
    else if (text.starts_with("```"))
      side.isInCode = !side.isInCode;
  }

  std::array<Side, 2> sides_;
  Place place_ = Place::common;
  bool found_ = false;
  bool touchHeader_ = false;
  bool areInCode_ = false;
};

}  // namespace

std::optional<ConflictMarkers> ConflictMarkers::in(std::string_view text) {
  if (!mayBeIn(text)) return std::nullopt;
  Reader reader;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    const std::size_t length = end == std::string_view::npos ? text.size() : end + 1;
    if (!reader.read(text.substr(0, length))) return std::nullopt;
    text.remove_prefix(length);
  }
  return reader.result();
}

bool ConflictMarkers::mayBeIn(std::string_view text) {
  return text.find(">>>>>>>") != std::string_view::npos &&
         text.find("<<<<<<<") != std::string_view::npos;
}

}  // namespace nomely
