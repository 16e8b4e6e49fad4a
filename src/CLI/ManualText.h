#pragma once

#include <string>
#include <vector>

namespace nomely {

// A section of the manual page that isn't made of the syntax, in plain text.
struct ManualSection {
  struct Entry {
    std::string term;
    std::string text;
  };

  std::string title;
  std::string text = {};
  std::vector<Entry> entries = {};
  std::string closing = {};  // after the entries
};

// Those that follow the commands: what the words of a command line mean, what comes out, and what
// lies where.
[[nodiscard]] std::vector<ManualSection> manualSections();

}  // namespace nomely
