#pragma once

#include <cstddef>
#include <string>

namespace nomely {

struct FlomoImportResult {
  std::size_t memosImported = 0;
  std::size_t memosRepaired = 0;  // existing ones that got the files that they lacked
  std::size_t daysAffected = 0;   // that got a new memo
  std::size_t attachmentsImported = 0;
  std::size_t attachmentsMissing = 0;

  // What a user is told.
  [[nodiscard]] std::string text() const;
};

}  // namespace nomely
