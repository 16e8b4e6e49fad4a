#pragma once

#include <string_view>

namespace nomely {

// Text of which folding (see FoldedText.h) does no more than lower its ASCII letters: that in Han
// and in most scripts without case, and most signs. Pure; safe on any thread.

// Whether folding leaves a character beyond ASCII as it is, and it joins nothing before it.
[[nodiscard]] bool isPlainCharacter(char32_t character);

// Whether all of `text`, which is well-formed, is ASCII and such characters. Runs at about the
// speed of memory.
[[nodiscard]] bool isPlainText(std::string_view text);

}  // namespace nomely
