#pragma once

#include <filesystem>
#include <set>
#include <string>

#include "Core/Lifecycle/Settling/MemoText.h"
#include "Core/Service/MemoService.h"

namespace nomely {

// Keeps what goes when one of two texts of a note is left: the other text in the note's history,
// with the files that it alone names. Inside a write of the gate.
class StateKeeping {
 public:
  // Where texts lie, and where the files that they name do.
  struct Home {
    std::filesystem::path texts;
    std::filesystem::path files;

    [[nodiscard]] static Home of(const DiskPaths& paths, Day day) {
      return {paths.dayFolder(day), paths.dayFolder(day)};
    }
    friend bool operator==(const Home&, const Home&) = default;
  };
  struct Side {
    const MemoText& text;
    Home home;
  };

  explicit StateKeeping(const MemoService& service) : service_(service) {}

  // Before `going` goes: puts it into the history of the identity that both have. The files that it
  // names are copied to where `staying` needs them, else beside the history. Returns those that
  // nobody needs where they lie once it is gone.
  [[nodiscard]] std::set<std::filesystem::path> keep(const Side& going, const Side& staying) const;
  // Copies the files that the memo names and that lie in `from` to `to` where they are missing.
  // Returns those that are in both.
  [[nodiscard]] std::set<std::filesystem::path> bring(const Memo& memo, const Home& from,
                                                      const Home& to) const;
  // When it has gone: removes those of these files that no text beside them names by then. `texts`
  // is the folder of those, in which the file `except` counts as gone.
  void letGo(const std::set<std::filesystem::path>& files, const std::filesystem::path& texts,
             const std::string& except = {}) const;

  // Keeps the bytes of a file that had to be changed to become `text`, if it was.
  void keepFound(const MemoText& text) const;

  // Whether a Markdown file of that folder but `except`, or a draft, names that file, or may.
  [[nodiscard]] bool isNamed(const std::string& filename, const std::filesystem::path& texts,
                             const std::string& except) const;

 private:
  const MemoService& service_;
};

}  // namespace nomely
