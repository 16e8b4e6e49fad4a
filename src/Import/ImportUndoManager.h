#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "Core/Service/MemoService.h"
#include "Import/ImportRun.h"

namespace nomely {

// Undoes imports: finds their memos by the hidden tags that imports leave, compared as a whole, and
// moves them to the trash. For background jobs; the gate is taken for each memo by itself. A day
// or a memo that can't be read counts as none. Throws FileError when the root can't be listed.
class ImportUndoManager {
 public:
  // Must outlive this.
  explicit ImportUndoManager(const MemoService& service) : service_(service) {}

  struct Count {
    std::size_t memos = 0;
    std::size_t edited = 0;  // of those, by Nomely since they were imported
  };
  using Places = std::vector<MemoPlace>;

  [[nodiscard]] Count countFlomoImports(const ImportRun& run = {}) const;
  // The number of memos moved. One that can't be moved stays, without a word.
  std::size_t undoFlomoImport(const ImportRun& run = {}) const;
  Places undoFlomoImportDetailed(const ImportRun& run = {}) const;

  // Imports of Apple Notes are undone one at a time, the latest first.
  [[nodiscard]] std::optional<std::string> latestNotesImportBatchTag(
      const ImportRun& run = {}) const;
  [[nodiscard]] Count countLatestNotesImport(const ImportRun& run = {}) const;
  std::size_t undoLatestNotesImport(const ImportRun& run = {}) const;
  Places undoLatestNotesImportDetailed(const ImportRun& run = {}) const;

 private:
  [[nodiscard]] Count countMemos(const std::string& tag, const ImportRun& run) const;
  [[nodiscard]] Places trashMemosDetailed(const std::string& tag, const ImportRun& run) const;

  const MemoService& service_;
};

}  // namespace nomely
