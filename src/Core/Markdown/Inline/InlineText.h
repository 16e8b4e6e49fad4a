#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Core/Markdown/Text/StyledText.h"

namespace nomely {

// How the inline text of one block looks: Markdown, colour and size spans, bare links. Pure but for
// the shared cache; safe on any thread.
namespace MarkdownTextView {

// What a view brings to each of its texts. Without a default colour, the one who draws has his own.
struct InlineOptions {
  std::optional<TextColor> defaultColor = {};
  std::string_view highlightKeyword = {};
};

// The background of a hit, unless who draws has a better way to show it.
inline constexpr TextColor highlightColor{1.0, 0.92, 0.4, 1.0};

// What inlineAttributed takes for the text of a block: mentions "@[[id|label]]" as bold "@label".
[[nodiscard]] std::string prepared(std::string_view text);
// The same for a paragraph, whose line feeds are hard breaks.
[[nodiscard]] std::string preparedParagraph(std::string_view text);

// The text of one block, styled. Kept in the shared cache without its highlight.
[[nodiscard]] StyledText inlineAttributed(std::string_view text, const InlineOptions& options = {});

// Makes hits of every occurrence of the keyword, as TextNeedle finds it; a blank keyword marks
// nothing.
[[nodiscard]] StyledText applyingHighlightKeyword(StyledText text, std::string_view keyword);

// A text without spans, styled.
[[nodiscard]] StyledText markdownAttributed(std::string_view text,
                                            const std::optional<TextColor>& defaultColor);

// For text whose bold borders on Chinese marks in a way that the inline rules refuse: bold between
// "**" alone, and no other marks.
[[nodiscard]] StyledText manualBoldFallback(std::string_view text,
                                            const std::optional<TextColor>& defaultColor);

// Links that stand in the text as they are, made into Markdown's: "a.com" → "[a.com](a.com)". Those
// in code and in links that are written in Markdown stay.
[[nodiscard]] std::string wrapBareURLsAsMarkdownLinks(std::string_view text);

}  // namespace MarkdownTextView

}  // namespace nomely
