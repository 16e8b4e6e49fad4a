#include "CLI/Progress.h"

#include <cstdio>

#include <fmt/format.h>

namespace nomely {

Progress::Progress(const Session& session, std::string label)
    : label_(std::move(label)), shown_(!session.options.quiet && Terminal::isError()) {}

Progress::~Progress() {
  if (percent_ >= 0) fmt::print(stderr, "\r\x1B[K");
}

void Progress::show(double share) {
  const int percent = static_cast<int>(share * 100);
  if (!shown_ || percent == percent_) return;
  if (std::chrono::steady_clock::now() - start_ < std::chrono::seconds(1)) return;
  percent_ = percent;
  constexpr int width = 30;
  const int filled = percent * width / 100;
  fmt::print(stderr, "\r\x1B[K{} {}{} {:3}%", label_,
             std::string(static_cast<std::size_t>(filled), '='),
             std::string(static_cast<std::size_t>(width - filled), '.'), percent);
  std::fflush(stderr);
}

}  // namespace nomely
