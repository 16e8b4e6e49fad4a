#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "CLI/Session.h"
#include "Platform/Files/DirectoryLock.h"

namespace nomely {

// A text while an editor has it: a file in a folder of its own under the state folder, which only
// its user can read and which is locked as long as this process lives. It stays until it is
// discarded, so that whatever dies leaves what was typed.
class EditorDraft {
 public:
  // Throws FileError.
  EditorDraft(const Session& session, std::string_view text);
  EditorDraft(const EditorDraft&) = delete;
  EditorDraft& operator=(const EditorDraft&) = delete;

  [[nodiscard]] const std::filesystem::path& file() const { return file_; }
  // What the editor has saved.
  [[nodiscard]] std::string text() const;
  void discard() noexcept;

  // The files with texts that nobody edits any more. Never throws.
  [[nodiscard]] static std::vector<std::filesystem::path> leftBehind(const Session& session);
  // Says where they are.
  static void tellOfLeftBehind(const Session& session);

 private:
  FileManager files_;
  std::filesystem::path folder_;
  std::filesystem::path file_;
  DirectoryLock lock_;
};

}  // namespace nomely
