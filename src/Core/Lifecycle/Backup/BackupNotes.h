#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "Core/Lifecycle/Backup/BackupArchive.h"
#include "Core/Models/Memo.h"
#include "Core/Storage/MemoPlace.h"
#include "Platform/Files/FileManager.h"

namespace nomely {

// The notes in an archive, read where they lie. What it says of them is not trusted: only day
// folders and names of memos are looked at. For one thread at a time; the archive must outlive it.
class BackupNotes {
 public:
  explicit BackupNotes(const BackupArchive& archive);

  [[nodiscard]] std::size_t count() const { return notes_.size(); }
  // Absent when there is none at that place. Throws ZipError, ParseError, EncodingError.
  [[nodiscard]] std::optional<Memo> read(const MemoPlace& place) const;
  // Reads them, newest day and highest number first, until `visit` returns false. Those that can't
  // be read are counted and left out.
  std::size_t forEach(const std::function<bool(const MemoPlace& place, Memo memo)>& visit) const;

  // Copies those files that `memo` names out of its day into `folder`, and returns the copies by
  // name. Names that the archive doesn't hold, or that could leave the folder, are left out.
  [[nodiscard]] std::map<std::string, std::filesystem::path> unpackAttachments(
      Day day, const Memo& memo, const std::filesystem::path& folder,
      const FileManager& files) const;

 private:
  [[nodiscard]] Memo read(const ZipEntry& entry, std::int64_t seqNumber) const;

  const ZipReader& zip_;
  std::map<std::pair<Day, std::int64_t>, const ZipEntry*> notes_;
};

}  // namespace nomely
