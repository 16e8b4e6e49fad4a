#include "Core/Markdown/Frontmatter/ParseError.h"

namespace nomely {
namespace {

std::string_view codeOf(ParseError::Kind kind) {
  switch (kind) {
    case ParseError::Kind::yamlDecode:
      return "memo.yamlDecode";
    case ParseError::Kind::missingFrontmatter:
      return "memo.missingFrontmatter";
    case ParseError::Kind::unclosedFrontmatter:
      return "memo.unclosedFrontmatter";
  }
  return {};
}

}  // namespace

ParseError::ParseError(Kind kind, const std::string& text, const std::string& message)
    : Error(codeOf(kind), text), kind_(kind), message_(message) {}

}  // namespace nomely
