#pragma once

#include <string>

namespace nomely {

// Of a frame. A value.
struct FeishuHeader {
  std::string key;
  std::string value;
  friend bool operator==(const FeishuHeader&, const FeishuHeader&) = default;
};

}  // namespace nomely
