#include "CLI/Waiting.h"

#include <cstdio>

#include <fmt/format.h>

namespace nomely {

Waiting::Waiting(const Session& session)
    : isShown_(!session.options.quiet && Terminal::isError()) {}

Waiting::Waiting(const Session& session, const std::string& what) : Waiting(session) {
  show(what + "…（按 Ctrl-C 取消）");
}

Waiting::~Waiting() {
  show("");
}

void Waiting::show(std::string_view text) const {
  if (!isShown_) return;
  fmt::print(stderr, "\r\x1B[K{}", text);
  std::fflush(stderr);
}

}  // namespace nomely
