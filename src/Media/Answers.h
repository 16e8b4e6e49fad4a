#pragma once

#include <string>

namespace nomely::media {

// Tells the caller of this program something, a line at a time. Whether anybody listens is all the
// same.
class Answers {
 public:
  explicit Answers(int descriptor) : descriptor_(descriptor) {}
  void line(std::string text) const;

 private:
  int descriptor_;
};

}  // namespace nomely::media
