#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Models/AudioTranscript.h"
#include "Core/Storage/StoreContext.h"
#include "Platform/Error.h"

namespace nomely {

// Files that lie beside the memos of a day and are named by them. All changes pass the gate and
// throw FileError and WriteError besides what single calls name. Stateless; safe on any thread.
class AttachmentManager {
 public:
  struct ImportResult {
    std::string filename;      // the name in the day folder
    std::string originalName;  // the name it had before, as UTF-8
  };

  class ImportError : public Error {
   public:
    enum class Kind { copyFailed, fileNotFound };
    ImportError(Kind kind, const std::string& text);
    [[nodiscard]] Kind kind() const noexcept { return kind_; }

   private:
    Kind kind_;
  };

  // The days in which the files that a pending memo names lie, and the day to which they have to
  // go.
  struct PendingPlaces {
    std::map<std::string, Day> sourceDates = {};
    Day fallbackDate;  // of names that `sourceDates` lacks
    Day destinationDate;
  };

  explicit AttachmentManager(StoreContext context) : context_(std::move(context)) {}

  // Copies a file into a day under a fresh short name; the source stays. The copy's extension is
  // the source's unless one is told ("" for none). Throws ImportError.
  [[nodiscard]] ImportResult importFile(const std::filesystem::path& source, Day day,
                                        const std::optional<std::string>& extension = {}) const;

  // Deletes a copy that importFile made and that no memo names yet: for good, as the source still
  // exists.
  void removeImported(const std::string& filename, Day day) const;

  // The bytes of a day's file; absent when there is none, it can't be read, or the name is not that
  // of an attachment.
  [[nodiscard]] std::optional<std::string> read(const std::string& filename, Day day) const;

  // Moves a day's file to the attachment trash, from where it can be taken back by hand until the
  // trash is emptied; one that isn't there is no error. The caller has made sure that no memo of
  // the day names it.
  void deleteFile(const std::string& filename, Day day) const;

  // Like deleteFile for a file anywhere under the root.
  void discard(const std::filesystem::path& file) const;

  // Copies files of other days to `destinationDate`, in order, up to the first failure. A file that
  // is there with the same contents counts as copied. Throws ImportError.
  void preparePendingAttachments(const std::vector<std::string>& filenames,
                                 const PendingPlaces& places) const;

  // A name for an attachment that nothing else has: "3F2504E0.jpg". `extension` may be empty.
  [[nodiscard]] static std::string freshName(std::string_view extension);
  // A file's name as text: bytes that are no UTF-8 are read as GB 18030.
  [[nodiscard]] static std::string readableName(std::string_view name);

  // Whether a name found in a memo may be touched as an attachment: it stays inside its folder and
  // is not the name of a memo.
  [[nodiscard]] static bool isSafeName(std::string_view name);

 private:
  StoreContext context_;
};

namespace AttachmentStorage {
// Stores bytes in `folder` (inside the root) under a fresh name and returns it. Absent, and nothing
// written, when the folder can't be made or `extName` does not make a safe name. Through the gate;
// throws FileError, WriteError.
[[nodiscard]] std::optional<std::string> save(const StoreContext& context, std::string_view data,
                                              const std::optional<std::string>& extName,
                                              const std::filesystem::path& folder);
}  // namespace AttachmentStorage

namespace PendingMemoAttachments {
// The list with the recordings appended that only the transcripts name, in sorted order: ["b.png"]
// and transcripts of "c.m4a", "a.m4a" → ["b.png", "a.m4a", "c.m4a"].
[[nodiscard]] std::vector<std::string> merged(
    const std::vector<std::string>& pendingAttachments,
    const std::map<std::string, AudioTranscript>& pendingAudioTranscripts);
}  // namespace PendingMemoAttachments

}  // namespace nomely
