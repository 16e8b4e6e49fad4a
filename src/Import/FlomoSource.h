#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "Platform/Files/FileManager.h"

namespace nomely {

// An export as it lies on the disk: the page, and the files that its notes refer to. What it refers
// to elsewhere (an address of the web, a path that leaves the export) is not part of it. For one
// thread.
//
// Throws FileError, ZipError and ImportError.
class FlomoSource {
 public:
  // Far more than a life's notes; a page that claims more is refused.
  static constexpr std::uint64_t largestPage = std::uint64_t{512} << 20;
  // A file of more is left out, as if it were missing.
  static constexpr std::uint64_t largestMedia = std::uint64_t{2} << 30;

  virtual ~FlomoSource() = default;

  using Sink = FileManager::Sink;
  [[nodiscard]] virtual std::uint64_t pageSize() const = 0;  // in bytes
  // Hands on the page piece by piece. May be called again.
  virtual void readPage(const Sink& sink) = 0;
  // The contents of the file that `reference` (normalised) names; null when there is none. Valid as
  // long as the source.
  using Media = FileManager::Producer;
  [[nodiscard]] Media media(std::string_view reference);

  // How files are named by references: "/file/a%20b.jpg?v=1" → "file/a b.jpg".
  [[nodiscard]] static std::string normalizedMediaRef(std::string_view reference);

 protected:
  // The same for a reference that is normalised and not empty.
  [[nodiscard]] virtual Media find(const std::string& reference) = 0;
};

}  // namespace nomely
