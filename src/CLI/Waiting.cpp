#include "CLI/Waiting.h"

#include <cstdio>

#include <fmt/format.h>

namespace nomely {

Waiting::Waiting(const Session& session, const std::string& what)
    : shown_(!session.options.quiet && Terminal::isError()) {
  if (!shown_) return;
  fmt::print(stderr, "{}…（按 Ctrl-C 取消）", what);
  std::fflush(stderr);
}

Waiting::~Waiting() {
  if (shown_) fmt::print(stderr, "\r\x1B[K");
}

}  // namespace nomely
