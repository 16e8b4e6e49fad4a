#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Platform/System/Uuid.h"
#include "Platform/Time/Day.h"

namespace nomely {

struct SearchResult {
  Uuid id = Uuid::random();  // fresh for each result of each search
  Day date;
  std::int64_t seqNumber = 0;
  std::string time;
  std::string body;
  std::vector<std::string> tags;
  std::string snippet;  // empty when only a tag explains the hit
};

}  // namespace nomely
