#include "Core/Markdown/Text/WordDiff.h"

#include <algorithm>
#include <cstddef>

#include "Platform/Text/SequenceDiff.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

bool isWordByte(char byte) {
  return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= 'a' && byte <= 'z');
}

// Joins the character before it: a mark, a variation selector, or the second half of an emoji.
bool continues(char32_t character, bool isAfterJoiner) {
  constexpr char32_t joiner = 0x200D;
  const bool isSkinTone = character >= 0x1F3FB && character <= 0x1F3FF;
  return isAfterJoiner || character == joiner || isSkinTone || isMark(character);
}

std::size_t pieceEnd(std::string_view text) {
  if (isWordByte(text[0]))
    return static_cast<std::size_t>(std::ranges::find_if_not(text, isWordByte) - text.begin());
  std::size_t end = decodeFirst(text).length;
  for (bool isAfterJoiner = false; end < text.size();) {
    const DecodedCharacter next = decodeFirst(text.substr(end));
    if (!continues(next.value, isAfterJoiner)) break;
    isAfterJoiner = next.value == 0x200D;
    end += next.length;
  }
  return end;
}

std::vector<std::string_view> piecesOf(std::string_view text) {
  std::vector<std::string_view> pieces;
  while (!text.empty()) {
    pieces.push_back(text.substr(0, pieceEnd(text)));
    text.remove_prefix(pieces.back().size());
  }
  return pieces;
}

// A change, and the text that follows it in both.
struct Step {
  std::size_t removed = 0;  // bytes
  std::size_t added = 0;
  std::size_t same = 0;

  [[nodiscard]] std::size_t size() const { return std::max(removed, added); }
};

std::vector<Step> stepsOf(const std::vector<std::string_view>& before,
                          const std::vector<std::string_view>& after) {
  const SequenceChanges changes = sequenceDiff(before, after);
  std::vector<Step> steps(1);
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < before.size() || j < after.size()) {
    const bool isRemoved = i < before.size() && changes.removed[i];
    const bool isAdded = !isRemoved && j < after.size() && changes.added[j];
    if ((isRemoved || isAdded) && steps.back().same > 0) steps.emplace_back();
    if (isRemoved)
      steps.back().removed += before[i++].size();
    else if (isAdded)
      steps.back().added += after[j++].size();
    else
      steps.back().same += before[i++].size(), ++j;
  }
  return steps;
}

// Joins two changes that are both longer than what they share between them.
std::vector<Step> joined(const std::vector<Step>& steps) {
  std::vector<Step> result;
  for (const Step& step : steps) {
    result.push_back(step);
    while (result.size() > 1) {
      Step& former = result[result.size() - 2];
      const Step& latter = result.back();
      if (former.same > std::min(former.size(), latter.size())) break;
      former = {former.removed + former.same + latter.removed,
                former.added + former.same + latter.added, latter.same};
      result.pop_back();
    }
  }
  return result;
}

}  // namespace

std::vector<WordChange> wordDiff(std::string_view before, std::string_view after) {
  using Kind = WordChange::Kind;
  std::vector<WordChange> changes;
  const auto take = [&](std::string_view& text, std::size_t size, Kind kind) {
    if (size > 0) changes.push_back({kind, text.substr(0, size)});
    text.remove_prefix(size);
  };
  for (const Step& step : joined(stepsOf(piecesOf(before), piecesOf(after)))) {
    take(before, step.removed, Kind::removed);
    take(after, step.added, Kind::added);
    take(before, step.same, Kind::same);
    after.remove_prefix(step.same);
  }
  return changes;
}

}  // namespace nomely
