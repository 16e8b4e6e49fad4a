#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "Core/Storage/DayStore.h"

namespace nomely {

// Changes that a user makes to one memo, each in one write of the gate: the memo changes with its
// files or not at all, and a change made elsewhere meanwhile is never overwritten. Stateless; safe
// on any thread. Throws what DayStore and AttachmentManager throw.
class MemoEditor {
 public:
  explicit MemoEditor(const DayStore& store) : store_(store) {}

  // Creates a memo with copies of `files` attached. The copies go again when it fails.
  [[nodiscard]] Memo create(Day day, DayStore::NewMemo content,
                            const std::vector<std::filesystem::path>& files) const;

  // Applies `change` to `original` and commits it with a snapshot and a new `updatedAt`. Throws
  // WriteError (conflict) when the memo on disk is no longer what `original` was read from. A
  // change that alters nothing writes nothing. Returns the memo as it stands.
  Memo change(Day day, const Memo& original, const std::function<void(Memo&)>& change) const;

  // Adds copies of `files` to the memo.
  Memo attach(Day day, const Memo& original, const std::vector<std::filesystem::path>& files) const;
  // Takes the names off the memo with all that is kept about them. A file that no other memo of
  // the day names goes to the attachment trash, unless one of those memos can't be read; the
  // snapshot keeps a copy.
  Memo detach(Day day, const Memo& original, const std::vector<std::string>& filenames) const;

 private:
  // Imports the files and lets `save` write the memo that names them; the copies go again when it
  // throws.
  Memo withImported(Day day, const std::vector<std::filesystem::path>& files,
                    const std::function<Memo(const std::function<void(Memo&)>& name)>& save) const;

  const DayStore& store_;
};

}  // namespace nomely
