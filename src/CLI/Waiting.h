#pragma once

#include <string>
#include <string_view>

#include "CLI/Session.h"

namespace nomely {

// A line on standard error that says what is going on or waited for, and goes at the end of its
// life; nothing when that is no terminal or the user asked for quiet.
class Waiting {
 public:
  explicit Waiting(const Session& session);
  // Shows `what`, and how to put an end to it.
  Waiting(const Session& session, const std::string& what);
  ~Waiting();
  Waiting(const Waiting&) = delete;
  Waiting& operator=(const Waiting&) = delete;

  [[nodiscard]] bool isShown() const { return isShown_; }
  // In place of what stood there.
  void show(std::string_view text) const;

 private:
  bool isShown_;
};

}  // namespace nomely
