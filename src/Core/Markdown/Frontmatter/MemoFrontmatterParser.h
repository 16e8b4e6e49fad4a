#pragma once

#include <string>
#include <string_view>

#include "Core/Models/Memo.h"
#include "Platform/Error.h"

namespace nomely {

// Why a memo file's text is no memo. For logs and callers; it has no wording for the user.
class ParseError : public Error {
 public:
  enum class Kind { yamlDecode, missingFrontmatter, unclosedFrontmatter };

  // `message` says more for yamlDecode.
  explicit ParseError(Kind kind, const std::string& message = {});

  [[nodiscard]] Kind kind() const noexcept { return kind_; }
  [[nodiscard]] const std::string& message() const noexcept { return message_; }

 private:
  Kind kind_;
  std::string message_;
};

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

// Throws YamlError when a value is not well-formed UTF-8. Reading the result gives the same values,
// but for leading blank lines of `body`.
[[nodiscard]] std::string serialize(const MemoFrontmatter& frontmatter, std::string_view body);

}  // namespace MemoFrontmatterParser

}  // namespace nomely
