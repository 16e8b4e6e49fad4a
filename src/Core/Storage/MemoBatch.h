#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Models/Memo.h"
#include "Core/Storage/StoreContext.h"
#include "Platform/Files/FileBatch.h"

namespace nomely {

// New memos of any days, with files of theirs, which wait for the disk together instead of one by
// one. To be made, filled and placed inside one write of the gate; what was not placed goes again
// at the end of its life.
//
// A power cut leaves each memo whole or not at all. That none is gone after one is only certain
// once `settle` has returned.
//
// Throws FileError, and YamlError for a memo that can't be written.
class MemoBatch {
 public:
  explicit MemoBatch(const StoreContext& context) : context_(context), files_(context.files) {}
  ~MemoBatch();
  MemoBatch(const MemoBatch&) = delete;
  MemoBatch& operator=(const MemoBatch&) = delete;

  // Stores an attachment under a fresh name, which is returned. `extension` is asked once the
  // contents have been produced. Absent, with nothing stored, when it makes no safe name.
  [[nodiscard]] std::optional<std::string> addFile(Day day, const FileManager::Producer& produce,
                                                   const std::function<std::string()>& extension);
  // `memo` has a number to begin with, which is raised where that is taken; its identity, its
  // moments and its schema are set. The files added since the last memo are its own.
  void add(Day day, Memo memo);

  [[nodiscard]] std::size_t size() const { return memos_.size(); }
  [[nodiscard]] std::uint64_t bytes() const { return files_.bytes(); }

  // Gives everything its name. `placed` is called for each memo, in order, with its number. After a
  // failure the memos for which it was called stand, and no files but theirs.
  using Placed = std::function<void(Day day, const Memo& memo)>;
  void place(const Placed& placed = {});

  // Returns when everything that was placed in this root so far is durable.
  static void settle(const StoreContext& context);

 private:
  struct Attachment {
    std::size_t file;
    std::filesystem::path target;
  };
  struct Entry {
    Day day;
    Memo memo;
    std::size_t file;
    std::vector<Attachment> attachments;
  };

  [[nodiscard]] std::filesystem::path prepare(Day day);
  void placeWith(const std::vector<Attachment>& attachments, const std::function<void()>& then);
  void placeMemo(Entry& entry);

  const StoreContext& context_;
  std::set<Day> prepared_;
  std::vector<std::filesystem::path> made_;  // folders
  std::vector<Attachment> loose_;            // since the last memo
  std::vector<Entry> memos_;
  FileBatch files_;
};

}  // namespace nomely
