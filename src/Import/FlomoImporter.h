#pragma once

#include <filesystem>

#include "Core/Service/MemoService.h"
#include "Import/FlomoImportResult.h"
#include "Import/ImportPreviewSummary.h"
#include "Import/ImportRun.h"

namespace nomely {

// Turns the notes of a flomo export (its page, or the ZIP archive of page and files) into memos of
// their days. Repeatable: what is there already is not brought in again, so an import that was
// stopped, or killed, is finished by another one. Memory grows by some dozens of bytes a note.
//
// For background jobs. Throws ImportError, ZipError and FileError.
class FlomoImporter {
 public:
  // Must outlive the importer.
  explicit FlomoImporter(const MemoService& service) : service_(service) {}

  // What importing would do; writes nothing.
  [[nodiscard]] ImportPreviewSummary previewFromURL(const std::filesystem::path& file,
                                                    const ImportRun& run = {}) const;

  // Takes the gate for a thousand notes at a time, so that others can write meanwhile, and
  // announces its changes as one. What it wrote stays when it fails; it has reached the disk, and
  // stands after a power cut, when this returns.
  FlomoImportResult importFromURL(const std::filesystem::path& file,
                                  const ImportRun& run = {}) const;

 private:
  const MemoService& service_;
};

}  // namespace nomely
