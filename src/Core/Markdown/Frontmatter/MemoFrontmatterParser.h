#pragma once

#include <string>
#include <string_view>

#include "Core/Markdown/Frontmatter/ParseError.h"
#include "Core/Models/Memo.h"

namespace nomely {

// Joins and splits a memo file: a YAML header between two lines "---", then the body. Pure.
//
// Reading is lenient in the header's form (any YAML 1.1, any key order, unknown keys, nulls for
// absent values) and strict in its meaning: a value of the wrong type makes the whole file
// unreadable, so that a later write can't lose it.
namespace MemoFrontmatterParser {

struct ParsedMemo {
  MemoFrontmatter frontmatter;
  std::string body;  // without the blank lines that lead it in the file
};

// Throws ParseError. `content` is well-formed UTF-8.
[[nodiscard]] ParsedMemo parse(std::string_view content);

// The same without the body.
[[nodiscard]] MemoFrontmatter parseHeader(std::string_view content);

// Throws YamlError when a value is not well-formed UTF-8. Reading the result gives the same values,
// but for leading blank lines of `body`.
[[nodiscard]] std::string serialize(const MemoFrontmatter& frontmatter, std::string_view body);

// `body` without the blank lines at its beginning, as parse returns it: "\n\ntext" → "text".
[[nodiscard]] std::string_view bodyAsRead(std::string_view body);

// Whether the header may spell a value in other characters than it stands for: "\u5de5", 'it''s'.
// If not, each line of each value is found in the file as it reads. `content` is any bytes.
[[nodiscard]] bool mayEscape(std::string_view content);

// Whether reading this file and writing it again would drop something that a person wrote in its
// header: keys that are not ours, comments, anchors, tags. False for what serialize() writes and
// for a file that parse() refuses, as nothing is written over that. `content` is well-formed UTF-8.
[[nodiscard]] bool losesOnRewrite(std::string_view content);

}  // namespace MemoFrontmatterParser

}  // namespace nomely
