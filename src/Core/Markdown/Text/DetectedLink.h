#pragma once

#include <cstddef>
#include <string>

namespace nomely {

struct DetectedLink {
  std::string url;                // absolute; characters beyond ASCII as they stand in the body
  std::string title;              // for people: the name of the page, else the host
  std::string sourceText;         // as it stands in the body
  std::size_t rangeLocation = 0;  // UTF-16 units of the body
  std::size_t rangeLength = 0;

  friend bool operator==(const DetectedLink&, const DetectedLink&) = default;
};

}  // namespace nomely
