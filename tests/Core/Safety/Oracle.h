#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Core/Models/Memo.h"
#include "Support/MemoryFileSystem.h"

namespace nomely::test {

// Judges what a disturbed run left by the trees before and after one that nothing disturbed. What
// is drawn anew on each run (identities, random names) counts as equal; so do the numbers of memos
// and the times in the names of snapshots. Temporaries of ours count as nothing.
class Oracle {
 public:
  Oracle(const Tree& before, const Tree& after);

  // Of a writer that may have died, or of a day that is being built.
  [[nodiscard]] static bool isTemporary(const std::string& path);

  // Expects what holds at any moment: a content that is there before and after is there; a file
  // that keeps its place and content keeps them; any file is, where it lies, whole as before or
  // whole as after, or a memo that has a version like it; a memo that is there before and after is
  // there, in its day or the trash and not in its versions alone; one in its day has its
  // attachments beside it.
  void expectIntact(const Tree& now) const;
  // Expects of who failed, and lives, that it took back what it made: no memo stands more often
  // than before or after, none is in the trash by half, and beside the memos lies no freshly named
  // file that none of them names.
  void expectTakenBack(const Tree& now) const;
  // Expects what stands after the operation, attachments thrown away wherever they are.
  void expectDone(const Tree& now) const;
  // Expects besides that nothing is left which the operation takes away: no memo, nothing in the
  // trash or the versions. A file of an attachment may stay beside the memos.
  void expectNothingLeft(const Tree& now) const;

  // What the operation changes, as text for a reader: "2026-03-01/002.md → 2026-03-02/002.md".
  [[nodiscard]] std::string changes() const;
  // Paths below the root of contents that it loses.
  [[nodiscard]] std::vector<std::string> lost() const;

 private:
  using Item = std::pair<std::string, std::string>;  // place, content
  // All copies of one memo outside its versions.
  struct Copies {
    int count = 0;
    bool inDays = true;      // none is in the trash
    bool isLacking = false;  // one in a day has not all its attachments beside it
  };
  struct View {
    std::map<std::string, std::string> files;  // by path
    std::set<Item> items;                      // so that equal ones stand for the same
    std::set<std::string> contents;
    std::set<std::string> snapshots;      // contents of theirs
    std::set<std::string> named;          // paths of attachments in days
    std::set<std::string> strays;         // places of files with fresh names that none is
    std::map<std::string, Copies> memos;  // by identity
  };

  [[nodiscard]] View viewOf(const Tree& tree) const;
  void addMemo(View& view, const std::string& path, const std::string& text) const;
  [[nodiscard]] bool needsAttachments(const std::string& memoId) const;
  [[nodiscard]] std::string placeOf(const std::string& path) const;
  // With "*" for what was drawn at random.
  [[nodiscard]] const std::string& settled(const std::string& text) const;

  std::set<std::string, std::less<>> known_;                               // words
  mutable std::map<std::string, std::string> settled_;                     // remembered
  mutable std::map<std::string, std::optional<MemoFrontmatter>> headers_;  // of memos, so too
  Tree beforeTree_;
  Tree afterTree_;
  View before_;
  View after_;
};

}  // namespace nomely::test
