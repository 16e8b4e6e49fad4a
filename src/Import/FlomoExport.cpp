#include "Import/FlomoExport.h"

#include "Core/Extensions/PathNames.h"
#include "Import/FlomoArchive.h"
#include "Import/FlomoFolder.h"

namespace nomely {

std::unique_ptr<FlomoSource> openFlomoExport(const FileManager& files,
                                             const std::filesystem::path& file) {
  if (lowerCaseExtension(lastComponent(file.native())) == "zip")
    return std::make_unique<FlomoArchive>(files, file);
  return std::make_unique<FlomoFolder>(files, file);
}

}  // namespace nomely
