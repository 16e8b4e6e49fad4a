#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Core/Query/MemoEntry.h"
#include "Platform/Text/FoldedText.h"

namespace nomely {

// A memo made ready for searching. Immutable.
class IndexedMemo {
 public:
  explicit IndexedMemo(Memo memo);

  [[nodiscard]] const Memo& memo() const { return memo_; }
  [[nodiscard]] bool bodyContains(const TextNeedle& needle) const {
    return needle.isInFolded(foldedBody_ ? *foldedBody_ : memo_.body);
  }
  [[nodiscard]] bool aTagContains(const TextNeedle& needle) const {
    return needle.isInFolded(foldedTags_);
  }

 private:
  Memo memo_;
  // Most bodies need no folded copy, which halves what the index takes.
  std::unique_ptr<const std::string> foldedBody_;
  std::string foldedTags_;
};

// Every memo, newest first. Immutable: a change gives a new cache that shares all days but one, so
// that readers go through theirs without a lock.
class MemoCache {
 public:
  struct DayMemos {
    Day date;
    std::vector<std::shared_ptr<const IndexedMemo>> memos;
  };
  using Days = std::vector<std::shared_ptr<const DayMemos>>;

  // The memos of a day in their order.
  [[nodiscard]] static std::shared_ptr<const DayMemos> sortedDay(Day date, std::vector<Memo> memos);

  // Days without memos may be null; the others descend.
  explicit MemoCache(Days days);

  [[nodiscard]] const Days& days() const { return days_; }
  [[nodiscard]] std::size_t size() const { return size_; }

  // A memo of that day and number is replaced where it stands, another goes to its place in the
  // order.
  [[nodiscard]] std::shared_ptr<const MemoCache> with(Memo memo, Day date) const;
  [[nodiscard]] std::shared_ptr<const MemoCache> without(Day date, std::int64_t seqNumber) const;

 private:
  // Where that day is or would be.
  [[nodiscard]] Days::const_iterator position(Day date) const;
  // A copy in which `changed` has taken the place of its day.
  [[nodiscard]] std::shared_ptr<const MemoCache> withDay(DayMemos changed) const;

  Days days_;
  std::size_t size_ = 0;
};

}  // namespace nomely
