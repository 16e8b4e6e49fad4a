#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nomely {

// A memo file that can't be read, made readable.
struct MendedFile {
  std::string content;
  std::vector<std::string> mends;  // Chinese, one for each kind, such as "换行 CRLF → LF"
};

namespace MemoFileRepair {

// Mends a byte order mark, CRLF or CR line ends, blank lines above the header, and a missing
// header, in whose place `---\ntime: <time>\n---\n\n` is put above the whole text; no more of these
// than reading needs. Absent when `content` can be read as it is, stays unreadable all the same,
// holds nothing but white space, or is not UTF-8. Pure.
[[nodiscard]] std::optional<MendedFile> mended(std::string_view content, std::string_view time);

}  // namespace MemoFileRepair

}  // namespace nomely
