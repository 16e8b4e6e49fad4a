#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace nomely::media {

// What the caller of this program tells it while it works, a line at a time.
class Commands {
 public:
  explicit Commands(int descriptor) : descriptor_(descriptor) {}

  [[nodiscard]] int descriptor() const { return descriptor_; }
  // Reads what has come, which poll(2) has told of, and gives each whole line to `obey`. False at
  // the end.
  [[nodiscard]] bool read(const std::function<void(std::string_view)>& obey);

 private:
  int descriptor_;
  std::string unread_;
};

}  // namespace nomely::media
