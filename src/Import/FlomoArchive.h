#pragma once

#include <unordered_map>

#include "Import/FlomoSource.h"
#include "Platform/Archive/ZipReader.h"

namespace nomely {

// An export as a ZIP archive. A reference is satisfied by the first entry whose name ends in its
// whole path: "a/b.jpg" by "x/a/b.jpg", not by "xa/b.jpg".
class FlomoArchive final : public FlomoSource {
 public:
  FlomoArchive(const FileManager& files, const std::filesystem::path& file);

  [[nodiscard]] std::uint64_t pageSize() const override { return page_->size; }
  void readPage(const Sink& sink) override;

 protected:
  [[nodiscard]] Media find(const std::string& reference) override;

 private:
  ZipReader zip_;
  ZipReader::Cursor cursor_{zip_};
  const ZipEntry* page_ = nullptr;
  // The files of each name, in the order in which they lie in the archive.
  std::unordered_map<std::string_view, std::vector<const ZipEntry*>> byLastComponent_;
};

}  // namespace nomely
