#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace nomely {

// A memo file in which git left both sides of what it could not merge.
struct ConflictMarkers {
  std::string ours;    // the file with the upper side of each block
  std::string theirs;  // the file with the lower side of each block
  // Whether a block begins inside the header, or where it should be: then the file is no memo.
  bool touchHeader = false;
  // Whether a block begins inside fenced code, where it may be what somebody wrote about.
  bool areInCode = false;

  // Takes `text` apart at every block of "<<<<<<<", "=======", ">>>>>>>", the common ancestor after
  // "|||||||" left out. Absent when there is no such block, or when the markers leave open which
  // line belongs to which side. Lines end in line feeds or CRLF. Pure.
  [[nodiscard]] static std::optional<ConflictMarkers> in(std::string_view text);

  // Whether there may be any, for who has many files to go through.
  [[nodiscard]] static bool mayBeIn(std::string_view text);
};

}  // namespace nomely
