#pragma once

#include "Import/FlomoSource.h"

namespace nomely {

// An export as a page in a folder. Files are those below that folder; one that a symbolic link
// leads to is not taken.
class FlomoFolder final : public FlomoSource {
 public:
  FlomoFolder(const FileManager& files, std::filesystem::path page);

  [[nodiscard]] std::uint64_t pageSize() const override;
  void readPage(const Sink& sink) override;

 protected:
  [[nodiscard]] Media find(const std::string& reference) override;

 private:
  void read(const std::filesystem::path& file, std::uint64_t most, const Sink& sink) const;

  FileSystem& fileSystem_;
  std::filesystem::path page_;
};

}  // namespace nomely
