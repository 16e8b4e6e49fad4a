#include "Core/Markdown/Blocks/BlockSpacing.h"

#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

bool isItem(const MarkdownBlock& block) {
  return std::holds_alternative<markdown::BulletItem>(block) ||
         std::holds_alternative<markdown::NumberedItem>(block) ||
         std::holds_alternative<markdown::CheckItem>(block);
}

// A paragraph of one short line, as those of a poem are.
bool isShortLine(const MarkdownBlock& block) {
  constexpr std::size_t mostCharacters = 37;
  const auto* const paragraph = std::get_if<markdown::Paragraph>(&block);
  return paragraph != nullptr && paragraph->text.find('\n') == std::string::npos &&
         graphemeCountUpTo(paragraph->text, mostCharacters) < mostCharacters;
}

}  // namespace

bool standClose(const MarkdownBlock& above, const MarkdownBlock& below) {
  return (isItem(above) && isItem(below)) || (isShortLine(above) && isShortLine(below));
}

}  // namespace nomely
