#pragma once

#include <bit>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Models/Memo.h"

namespace nomely::test {

// Headers made to be hard to write. `Source` has `std::uint32_t below(std::uint32_t bound)`.

// Pieces that mean something to YAML, to the header's fence, or to the folding of lines.
inline const std::vector<std::string_view> hardPieces = [] {
  std::string_view text =
      "---¦\n---\n¦...¦\n...\n¦ --- ¦　---　¦\n¦\n\n¦\r¦\r\n¦\xC2\x85¦\xE2\x80\xA8¦\xE2\x80\xA9¦"
      " ¦  ¦\t¦　¦\xC2\xA0¦\xEF\xBB\xBF¦#¦ #¦:¦: ¦ :¦-¦- ¦?¦? ¦[¦]¦{¦}¦,¦&a¦*a¦!¦!!str ¦|¦>¦'¦"
      "''¦\"¦%¦%TAG¦@¦`¦\\¦\\n¦null¦~¦true¦No¦y¦0¦-1¦017¦0x1F¦1_000¦12:30¦09:05¦1.5¦1e3¦.inf¦"
      ".nan¦2026-03-01¦2026-03-01T09:30:05+08:00¦<<¦="
      "¦日记¦é¦😀¦👩🏽‍💻¦\x01¦\x1B¦\x7F¦\xC2\x80¦"
      "\xEF\xBF\xBD¦\xEF\xBF\xBF¦a¦\uE000¦"
      "💡\\U0001F4A1¦word ¦";
  constexpr std::string_view mark = "¦";
  std::vector<std::string_view> pieces;
  for (std::size_t end; (end = text.find(mark)) != text.npos; text.remove_prefix(end + mark.size()))
    pieces.push_back(text.substr(0, end));
  return pieces;
}();

template <typename Source>
std::string drawText(Source& source) {
  std::string text;
  for (std::uint32_t left = source.below(8); left > 0; --left) {
    switch (source.below(12)) {
      case 0:  // lines are folded at eighty columns
        text.append(70 + source.below(20), 'w');
        break;
      case 1:
        text.append(source.below(90), ' ');
        break;
      case 2:
        text += static_cast<char>(source.below(128));
        break;
      default:
        text += hardPieces[source.below(static_cast<std::uint32_t>(hardPieces.size()))];
    }
  }
  return text;
}

template <typename Source>
std::uint64_t drawBits(Source& source) {
  std::uint64_t bits = 0;
  for (int i = 0; i < 4; ++i) bits = bits << 16U | source.below(1U << 16U);
  return bits;
}

template <typename Source>
double drawNumber(Source& source) {
  // Any bit pattern, or a short decimal as recorders write them.
  if (source.below(2) == 0) return std::bit_cast<double>(drawBits(source));
  return static_cast<double>(source.below(100000)) / 10;
}

template <typename Source>
MemoFrontmatter drawFrontmatter(Source& source) {
  // Never by a zero: a source that is used up gives nothing else.
  const auto chance = [&] { return source.below(3) == 1; };
  const auto text = [&] { return drawText(source); };
  MemoFrontmatter memo;
  memo.time = text();
  if (chance()) memo.schemaVersion = static_cast<std::int64_t>(drawBits(source));
  if (chance()) memo.memoId = text();
  if (chance()) memo.createdAt = text();
  if (chance()) memo.updatedAt = text();
  if (chance()) memo.source = text();
  if (chance()) memo.sourceId = text();
  if (chance()) memo.mood = static_cast<std::int64_t>(drawBits(source));
  memo.pinned = chance();
  memo.lockedOnTop = chance();
  for (; chance(); memo.tags.push_back(text())) {
  }
  for (; chance(); memo.attachments.push_back(text())) {
  }
  while (chance()) memo.attachmentDescriptions[text()] = text();
  while (chance()) memo.originalNames[text()] = text();
  while (chance()) {
    AudioTranscript& transcript = memo.audioTranscripts[text()];
    transcript.text = text();
    while (chance()) {
      AudioTranscriptSegment& segment = transcript.segments.emplace_back();
      segment.text = text();
      segment.start = drawNumber(source);
      segment.duration = drawNumber(source);
    }
  }
  return memo;
}

}  // namespace nomely::test
