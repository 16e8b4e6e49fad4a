#pragma once

#include <string_view>

namespace nomely {

// What the programs that keep a root alike on several machines (engines) put into it for
// themselves: by the last component of a path. Pure.
namespace EngineNames {

// A folder in which one keeps its own state or former files: never looked into.
[[nodiscard]] bool isFolder(std::string_view name);

// A file that one has not brought in whole yet. It gets another name, or goes, by itself.
[[nodiscard]] bool isTemporary(std::string_view name);

// A file by which its users tell one what to do (".stignore"), or in which it keeps its state.
[[nodiscard]] bool isOwnFile(std::string_view name);

// Any of these: nothing of the diary.
[[nodiscard]] bool isAny(std::string_view name);

}  // namespace EngineNames

}  // namespace nomely
