#pragma once

#include <filesystem>
#include <string>

#include "CLI/Session.h"

namespace nomely {

// The file that a command's result goes to. It appears whole or not at all, and replaces another
// only where the user agreed.
class OutputFile {
 public:
  // Throws UsageError for a folder and NameNotFoundError where its folder is missing.
  OutputFile(const std::string& name, const Session& session);

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }
  // Whether it may be written: asks where a file is there. To be called first.
  [[nodiscard]] bool confirm(const Session& session);
  [[nodiscard]] Replacement replacement() const { return replacement_; }

  // Throws FileError, Error when a file has come up meanwhile, and what `produce` throws.
  void write(const FileManager& files, const FileManager::Producer& produce) const;

 private:
  std::filesystem::path path_;
  Replacement replacement_ = Replacement::forbid;
};

}  // namespace nomely
