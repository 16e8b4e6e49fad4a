#include "Core/Storage/StoredFileName.h"

#include "Core/Storage/VersionStore.h"
#include "Platform/System/Uuid.h"
#include "Platform/Text/Ascii.h"

namespace nomely {

std::optional<std::string> StoredFileName::fresh(std::string_view extension) {
  std::string name = loweredAscii(Uuid::random().string());
  if (!extension.empty()) name.append(".").append(extension);
  return VersionStore::isSafeFilename(name) ? std::optional(std::move(name)) : std::nullopt;
}

}  // namespace nomely
