#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace nomely {

// Makes messages of the parts of a text, as few as may be. A part that has no place any more in the
// message so far begins another; only one that has no place in any message is cut.
class MessageParts {
 public:
  static constexpr std::size_t most = 2800;  // grapheme clusters of a message

  // `separator` stands between the part and the one before it in the same message.
  void add(std::string_view part, std::string_view separator);
  [[nodiscard]] std::vector<std::string> messages() && { return std::move(messages_); }

 private:
  std::vector<std::string> messages_;
  std::size_t length_ = 0;  // of the last one
};

}  // namespace nomely
