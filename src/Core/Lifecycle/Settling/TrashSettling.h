#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Core/Lifecycle/Settling/MemoText.h"
#include "Core/Lifecycle/Settling/SettlingResult.h"
#include "Core/Lifecycle/Settling/StandingNotes.h"
#include "Core/Lifecycle/Settling/StateKeeping.h"

namespace nomely {

// Settles what lies in the trash: two machines may have given two notes one folder there, or one of
// them trashed a note that the other went on writing. Each entry is one write of the gate. Throws
// what reading and writing memo files throws.
class TrashSettling {
 public:
  // All that is referred to must outlive it.
  TrashSettling(const MemoService& service, SettlingResult& result)
      : service_(service), context_(service.context()), result_(result), keeping_(service) {}

  // The names of the folders of entries. None when the trash is missing or is a link. Throws
  // FileError.
  [[nodiscard]] std::vector<std::string> entries() const;

  // Second forms of the files of an entry, and git's markers in them: another note gets an entry of
  // its own, an earlier text of the same note goes into its history.
  void settleCopies(const std::string& entry);
  // Takes an entry away whose note stands in a later text than the trashed one: someone wrote it
  // while someone else threw it away. The trashed text goes into the note's history. Where the text
  // is the same, or the trashed one is later, the note's file may still be about to go; then only
  // files that it names and its day lacks are copied back.
  void settleStanding(const std::string& entry, const StandingNotes& notes);

  // Second forms that stay, and why.
  void addStrays(const std::string& entry, std::vector<Stray>& strays) const;

  // The text of the note in the trash that has that identity.
  [[nodiscard]] static std::optional<MemoText> textOf(const MemoService& service,
                                                      const std::string& memoId);

 private:
  [[nodiscard]] static std::optional<MemoText> textIn(const StoreContext& context,
                                                      const std::filesystem::path& file);
  [[nodiscard]] std::filesystem::path folderOf(const std::string& entry) const;
  [[nodiscard]] std::vector<std::string> copiesOf(const std::filesystem::path& folder,
                                                  const std::string& base) const;
  // Gives a copy of a file that is gone that file's name, once it has lain here for a while. False
  // when the file is there, or the copy isn't.
  [[nodiscard]] bool takePlace(const std::filesystem::path& file,
                               const std::filesystem::path& base);
  // A file of an entry in which git left both sides.
  void settleMarkers(const std::filesystem::path& file);
  void settleMemo(const std::string& entry, const std::string& name);
  void settleMeta(const std::string& entry, const std::string& name);
  // Makes the folder `.trash/<entry>_<mark>` of the text in that file, with its place and the files
  // that no other text of the entry names. False when another text lies there.
  [[nodiscard]] bool separate(const std::string& entry, const MemoText& text,
                              const std::string& name) const;
  void bringFilesBack(const StateKeeping::Home& home, const StandingNotes::Note& standing);
  // Copies all files of an entry to where the note's history has them. False when that can't be.
  [[nodiscard]] bool isAllKept(const StateKeeping::Home& home, const std::string& memoId) const;
  [[nodiscard]] std::vector<DirectoryEntry> filesIn(const std::filesystem::path& folder) const;
  void tell(const std::filesystem::path& path, const std::string& outcome);

  const MemoService& service_;
  const StoreContext& context_;
  SettlingResult& result_;
  StateKeeping keeping_;
};

}  // namespace nomely
