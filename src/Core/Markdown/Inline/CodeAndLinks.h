#pragma once

#include <string_view>
#include <vector>

#include "Core/Markdown/Text/ByteRange.h"

namespace nomely {

// Where CommonMark sees code spans and links in an inline text: "`a`", "[a](b)", "![a](b)" from the
// first bracket to the last, "<https://a>". In rising order, none within another. HTML tags are not
// taken into account. Pure; linear in the text.
[[nodiscard]] std::vector<ByteRange> codeAndLinks(std::string_view text);

}  // namespace nomely
