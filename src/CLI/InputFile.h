#pragma once

#include <optional>
#include <string>

#include "Platform/Files/FileManager.h"

namespace nomely {

// What a command reads as a whole.
namespace InputFile {

// Throws FileError.
[[nodiscard]] std::string readStandardInput();

// The bytes of the file of that name; those of standard input without one and for "-". Throws
// UsageError when nobody gives a file and standard input is a terminal, NameNotFoundError when
// there is no such file, and FileError.
[[nodiscard]] std::string read(const FileManager& files, const std::optional<std::string>& name);

}  // namespace InputFile

}  // namespace nomely
