#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Core/Markdown/Text/StyledText.h"

namespace nomely {

// How the inline text of one block looks: Markdown, colour and size spans, bare links. Pure but for
// the shared cache; safe on any thread.
namespace MarkdownTextView {

// What a view sets for each of its texts. Without a default colour, whoever draws the text uses its
// own.
struct InlineOptions {
  std::optional<TextColor> defaultColor = {};
  std::string_view highlightKeyword = {};
};

// The background of a hit, unless whoever draws it has a better way to show it.
inline constexpr TextColor highlightColor{1.0, 0.92, 0.4, 1.0};

// What inlineAttributed takes for the text of a block: mentions "@[[id|label]]" as bold "@label".
[[nodiscard]] std::string prepared(std::string_view text);
// The same for a paragraph, whose line feeds are hard breaks.
[[nodiscard]] std::string preparedParagraph(std::string_view text);

// The text of one block, styled. The shared cache keeps it without the highlight.
[[nodiscard]] StyledText inlineAttributed(std::string_view text, const InlineOptions& options = {});

// Marks every occurrence of the keyword that TextNeedle finds as a hit; a blank keyword marks
// nothing.
[[nodiscard]] StyledText applyingHighlightKeyword(StyledText text, std::string_view keyword);

// A text without spans, styled.
[[nodiscard]] StyledText markdownAttributed(std::string_view text,
                                            const std::optional<TextColor>& defaultColor);

// Makes text between "**" bold and applies no other mark. For bold next to Chinese punctuation,
// which the inline rules do not recognise.
[[nodiscard]] StyledText manualBoldFallback(std::string_view text,
                                            const std::optional<TextColor>& defaultColor);

// Turns bare links into Markdown links: "a.com" → "[a.com](a.com)". Those in code and in Markdown
// links stay as they are.
[[nodiscard]] std::string wrapBareURLsAsMarkdownLinks(std::string_view text);

}  // namespace MarkdownTextView

}  // namespace nomely
