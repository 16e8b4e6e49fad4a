#pragma once

#include <filesystem>
#include <memory>

#include "Import/FlomoSource.h"

namespace nomely {

// A ZIP archive by its extension, else a page with its files in the folder where it lies. Throws
// FileError, ZipError, ImportError.
[[nodiscard]] std::unique_ptr<FlomoSource> openFlomoExport(const FileManager& files,
                                                           const std::filesystem::path& file);

}  // namespace nomely
