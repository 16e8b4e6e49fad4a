#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Files/FileManager.h"
#include "Platform/Time/Day.h"

namespace nomely {

// The copies of attachments that go into a folder beside an exported document, one folder a day in
// it. They are made in a hidden folder and appear when the document is about to. Nothing that is in
// the folder already is replaced or removed: what has the wanted name and the same bytes serves,
// anything else leaves its name alone (图.png, 图-2.png). Whatever was made goes with the object
// unless `keep` was called. One thread at a time; throws FileError.
class AttachmentCopies {
 public:
  AttachmentCopies(const FileManager& files, std::filesystem::path folder);
  ~AttachmentCopies();
  AttachmentCopies(const AttachmentCopies&) = delete;
  AttachmentCopies& operator=(const AttachmentCopies&) = delete;

  // Copies `source`, wanted under `name`, and returns its path from the folder's parent. Absent
  // when there is no such file or it can't be read.
  [[nodiscard]] std::optional<std::filesystem::path> add(const std::filesystem::path& source,
                                                         Day day, const std::string& name);
  // Lets the copies appear in the folder.
  void place();
  // The document that needs them is there.
  void keep() { placed_.clear(); }

 private:
  void place(const std::filesystem::path& from, const std::filesystem::path& to);

  FileManager files_;
  std::filesystem::path folder_;
  std::filesystem::path hidden_;               // beside it
  std::vector<std::filesystem::path> placed_;  // to be taken back, in this order
};

}  // namespace nomely
