#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Markdown/Text/LinkResultCache.h"

namespace nomely {

// The links of a body, for the link bar of its card. Takes time in proportion to the text. Safe on
// any thread.
//
// A link is an address with the scheme http or https, or a bare host name with a known ending, to
// which the scheme http is given. Mail addresses are none; neither are bare names that more likely
// are files ("readme.md"), unless a path follows or they begin with "www.".
//
// Links stand in Chinese text without blanks around them: a link ends before a mark that is no
// ASCII, before an ideograph that follows a Latin letter or digit, before a closing bracket
// without its opening one, and before ASCII marks of the sentence around it.
namespace LinkDetector {

// The links of `body`, from the shared cache if it has them. Each address once, in the order of the
// text.
[[nodiscard]] LinkResultCache::Links links(std::string_view body);

[[nodiscard]] std::vector<DetectedLink> computeLinks(std::string_view text);

// Where a link stands in a text, in bytes.
struct Place {
  std::size_t begin = 0;
  std::size_t end = 0;
  bool hasScheme = false;
};
// The places of all links, repeated addresses included.
[[nodiscard]] std::vector<Place> places(std::string_view text);

// The last component of the path without extension and percent signs, else the host, else the
// address itself.
[[nodiscard]] std::string title(std::string_view url);

}  // namespace LinkDetector

}  // namespace nomely
