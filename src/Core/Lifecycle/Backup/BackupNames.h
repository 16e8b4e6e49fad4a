#pragma once

#include <string>
#include <string_view>

namespace nomely {

// What backup and restore make of names of entries: paths relative to the root, with "/" between
// components and at the end of a folder's. Raw bytes. Pure.
namespace BackupNames {

inline constexpr const char* backups = ".backups";  // the folder in a root
// Folders and files of work that is under way; what follows them is drawn for each.
inline constexpr const char* workPrefix = ".nomely-backup-work-";
inline constexpr const char* partialPrefix = ".nomely-archive-";
inline constexpr const char* partialSuffix = ".partial";

// Whether it leads to one place below the root and nowhere else, on any system, and not into
// backups: no absolute path, no empty, "." or ".." component, no ".backups", no backslash, NUL or
// drive letter.
[[nodiscard]] bool isSafe(std::string_view name);

// Whether a note is looked for there: "2026-03-01/007.md".
[[nodiscard]] bool isNote(std::string_view name);

// Whether what stands there is one.
[[nodiscard]] bool isReadableNote(std::string_view bytes);

// The name as a manifest lists it: what is not UTF-8 becomes U+FFFD.
[[nodiscard]] std::string listed(std::string_view name);

}  // namespace BackupNames

}  // namespace nomely
