#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Core/Lifecycle/Settling/SettlingResult.h"
#include "Core/Storage/StoreContext.h"

namespace nomely {

// Settles what lies beside the earlier versions of notes: second forms of files that hold the same,
// and of the note of a place, which is a hint. Others stay; nobody writes over a version. Throws
// FileError.
class HistorySettling {
 public:
  // Both must outlive it.
  HistorySettling(const StoreContext& context, SettlingResult& result)
      : context_(context), result_(result) {}

  // Whether a folder with these files has something for settle().
  [[nodiscard]] static bool concerns(const std::vector<DirectoryEntry>& files);

  // `folder` is that of a note's versions, or of their attachments.
  void settle(const std::filesystem::path& folder);
  void addStrays(const std::filesystem::path& folder, std::vector<Stray>& strays) const;

 private:
  struct Copy {
    std::string name;
    std::string base;
  };
  [[nodiscard]] static std::vector<Copy> copiesIn(const std::vector<DirectoryEntry>& files);
  [[nodiscard]] bool isSettled(const std::filesystem::path& folder, const Copy& copy) const;

  const StoreContext& context_;
  SettlingResult& result_;
};

}  // namespace nomely
