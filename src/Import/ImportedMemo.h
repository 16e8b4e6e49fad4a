#pragma once

#include <string>
#include <vector>

#include "Platform/Time/Day.h"

namespace nomely {

// One note of an export.
struct ImportedMemo {
  Day date;
  std::string time;  // "HH:mm"
  std::string body;
  std::vector<std::string> tags = {};
  std::vector<std::string> mediaRefs = {};  // as they stand in the export
  bool isDated = true;                      // false: it told no time, and `date` is today
};

}  // namespace nomely
