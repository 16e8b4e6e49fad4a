#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace nomely {

// A file that a program which keeps two machines' folders alike has left beside the one that it
// would not replace, or a note that stands twice because of it.
struct Stray {
  std::filesystem::path path;  // below the root
  std::string reason;          // Chinese: what it is, and why it stays or what becomes of it
  bool canBeSettled = false;   // by the next pass
};

// What a pass of settling did.
struct SettlingResult {
  // The reason of a stray that the next pass settles.
  static constexpr const char* willBeSettled = "另一台电脑留下的，下次启动或 doctor --fix 时合并";
  // That of one which says nothing new, and may become the only one that says it.
  static constexpr const char* waitsForADay = "和原来的文件内容相同，过一天再移除";

  struct Told {
    std::filesystem::path path;  // below the root, as it was before
    std::string outcome;         // Chinese: what became of it
  };

  std::size_t notes = 0;      // texts of another machine that are in the diary or a history now
  std::size_t others = 0;     // further files that were put in order or had nothing new in them
  bool changedMemos = false;  // whether lists show something else
  // Whether something was written here so short a time ago that the engine may not be through with
  // it: another pass has to come.
  bool isWaiting = false;
  std::vector<Told> told;  // for the log and `doctor`
};

}  // namespace nomely
