#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Query/MemoEntry.h"
#include "Platform/Text/BigramFilter.h"
#include "Platform/Text/FoldedText.h"

namespace nomely {

// What is searched of a memo, as TextNeedle::findInFolded takes it: folded, or as it is when
// folding would do no more than lower its ASCII letters. Borrows from the memo.
struct SearchableText {
  std::string_view body;
  std::string_view tags;
};

// A memo made ready for searching. Immutable.
class IndexedMemo {
 public:
  explicit IndexedMemo(Memo&& memo);

  [[nodiscard]] const Memo& memo() const { return memo_; }
  [[nodiscard]] SearchableText text() const {
    return {foldedBody_ ? std::string_view(*foldedBody_) : memo_.body, foldedTags_};
  }

 private:
  Memo memo_;
  // Null when the body needs no folded copy, as most do; that halves the memory of the index.
  std::unique_ptr<const std::string> foldedBody_;
  std::string foldedTags_;
};

// Every memo, newest first. Immutable: a change gives a new cache that shares all but the piece in
// which it lies, so that readers go through theirs without a lock.
class MemoCache {
 public:
  using Memos = std::vector<std::shared_ptr<const IndexedMemo>>;

  // Memos of one day: all of them, or a piece of a day that has been changed while it held many.
  class DayMemos {
   public:
    DayMemos(Day date, Memos memos);
    ~DayMemos() { delete filter_.load(); }
    DayMemos(const DayMemos&) = delete;
    DayMemos& operator=(const DayMemos&) = delete;

    [[nodiscard]] Day date() const { return date_; }
    [[nodiscard]] const Memos& memos() const { return memos_; }
    // Where that number stands among them, else their count; reads them only if it may be there.
    [[nodiscard]] std::size_t indexOf(std::int64_t seqNumber) const;
    // What is searched of each of them, side by side: a search passes over most memos having read
    // nothing else of them.
    [[nodiscard]] const std::vector<SearchableText>& texts() const { return texts_; }

    // A Bloom filter over its bodies and tags; null until makeFilter was called.
    [[nodiscard]] const BigramFilter* filter() const { return filter_.load(); }
    void makeFilter() const;

   private:
    Day date_;
    Memos memos_;
    std::vector<SearchableText> texts_;
    std::int64_t lowest_ = 0;  // of their numbers
    std::int64_t highest_ = 0;
    mutable std::atomic<const BigramFilter*> filter_{nullptr};  // owned; set once
  };
  using Days = std::vector<std::shared_ptr<const DayMemos>>;

  // The memos of a day in their order.
  [[nodiscard]] static std::shared_ptr<const DayMemos> sortedDay(Day date, Memos memos);

  // A changed piece holds no more: changing one costs the same whatever the day holds.
  static constexpr std::size_t largestPiece = 256;

  // Newest day first; a null pointer stands for a day without memos.
  explicit MemoCache(Days days);

  [[nodiscard]] const Days& days() const { return days_; }

  // True for the first caller, who makes the filters of all days. Days that come later do without.
  [[nodiscard]] bool claimFilters() const { return !filtersClaimed_.exchange(true); }

  // Visits the memos until `visit` returns false.
  template <typename Visit>
  void forEachMemo(Visit visit) const {
    for (const auto& day : days_)
      for (const auto& memo : day->memos())
        if (!visit(day->date(), memo)) return;
  }

  // A memo of that day and number is replaced where it stands, another goes to its place in the
  // order.
  [[nodiscard]] std::shared_ptr<const MemoCache> with(Memo memo, Day date) const;
  [[nodiscard]] std::shared_ptr<const MemoCache> without(Day date, std::int64_t seqNumber) const;
  // With `memos`, each all of a day or null, in place of what it has of these days, which ascend.
  [[nodiscard]] std::shared_ptr<const MemoCache> withDays(const std::vector<Day>& days,
                                                          Days memos) const;

 private:
  // The pieces of that day in `days_`; where it would be inserted when there is none.
  [[nodiscard]] std::span<const std::shared_ptr<const DayMemos>> piecesOf(Day date) const;
  // A copy of the cache that has these memos, in pieces, in place of `pieces`.
  [[nodiscard]] std::shared_ptr<const MemoCache> replacing(
      std::span<const std::shared_ptr<const DayMemos>> pieces, Day date, const Memos& memos) const;

  Days days_;
  mutable std::atomic<bool> filtersClaimed_ = false;
};

}  // namespace nomely
