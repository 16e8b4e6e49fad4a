#pragma once

#include <cmath>
#include <string>
#include <string_view>

#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Platform/Text/Unicode.h"

namespace nomely::test {

// The memo without what two reads of one file differ in: the segments' identities. What is not a
// number equals nothing, so a number stands for it.
[[nodiscard]] inline MemoFrontmatter comparable(MemoFrontmatter memo) {
  constexpr double notANumber = -123.456;
  for (auto& [name, transcript] : memo.audioTranscripts)
    for (AudioTranscriptSegment& segment : transcript.segments) {
      segment.id = Uuid();
      if (std::isnan(segment.start)) segment.start = notANumber;
      if (std::isnan(segment.duration)) segment.duration = notANumber;
    }
  return memo;
}

// Whether reading what is written gives the same values, and no loss is seen in writing it again.
[[nodiscard]] inline bool survivesWriting(const MemoFrontmatter& memo, std::string_view body) {
  const std::string content = MemoFrontmatterParser::serialize(memo, body);
  const auto read = MemoFrontmatterParser::parse(content);
  return comparable(read.frontmatter) == comparable(memo) &&
         read.body == MemoFrontmatterParser::bodyAsRead(body) &&
         !MemoFrontmatterParser::losesOnRewrite(content);
}

enum class Reading { badText, refused, kept, changed };

// What becomes of a file's bytes: refused with a typed error, or a memo that survives writing.
[[nodiscard]] inline Reading readingOf(std::string_view content) {
  if (!isValidUtf8(content)) return Reading::badText;
  MemoFrontmatterParser::ParsedMemo memo;
  try {
    memo = MemoFrontmatterParser::parse(content);
  } catch (const ParseError&) {
    return Reading::refused;
  }
  return survivesWriting(memo.frontmatter, memo.body) ? Reading::kept : Reading::changed;
}

}  // namespace nomely::test
