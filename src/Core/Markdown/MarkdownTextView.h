#pragma once

// How a memo's body is drawn, for the faces: MarkdownTextView::blocks cuts it into blocks,
// inlineAttributed makes styled text of the text of each.
#include "Core/Markdown/Blocks/BlockParser.h"
#include "Core/Markdown/Inline/InlineText.h"
