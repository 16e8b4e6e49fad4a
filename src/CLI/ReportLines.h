#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "CLI/Terminal.h"

namespace nomely {

// A line for each finding of a report, its kind at the beginning.
class ReportLines {
 public:
  // `style` must outlive it.
  explicit ReportLines(const Style& style) : style_(style) {}

  void add(std::string_view kind, std::string_view what) {
    text_ += style_.warning(kind) + "  " + Terminal::printable(what) + "\n";
  }
  void add(std::string_view kind, const std::vector<std::filesystem::path>& paths) {
    for (const auto& path : paths) add(kind, path.string());
  }
  void say(std::string_view remark) { text_.append(Terminal::printable(remark)) += '\n'; }

  [[nodiscard]] const std::string& text() const { return text_; }

 private:
  const Style& style_;
  std::string text_;
};

}  // namespace nomely
