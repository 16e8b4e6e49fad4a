#pragma once

#include <string>

#include "CLI/Session.h"

namespace nomely {

// A line on standard error that says what is being waited for, and goes at the end of its life;
// nothing when that is no terminal or the user asked for quiet.
class Waiting {
 public:
  Waiting(const Session& session, const std::string& what);
  ~Waiting();
  Waiting(const Waiting&) = delete;
  Waiting& operator=(const Waiting&) = delete;

 private:
  bool shown_;
};

}  // namespace nomely
