#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Core/Query/MemoCache.h"
#include "Core/Query/SearchResult.h"
#include "Platform/Text/FoldedText.h"

namespace nomely {

// The words that someone looks for. A value.
class SearchQuery {
 public:
  explicit SearchQuery(std::string_view text);
  // A text as someone types it: an input method may have made other blanks of those that part its
  // words.
  [[nodiscard]] static std::string typed(std::string_view text);

  // Without words nothing is found.
  [[nodiscard]] bool isEmpty() const { return keywords_.empty(); }
  // False: no memo of the day matches. True: one may; only `matches` tells.
  [[nodiscard]] bool mayMatch(const MemoCache::DayMemos& day) const;
  // The same for the bytes of a memo file.
  [[nodiscard]] bool mayMatchFile(std::string_view content) const;
  // Whether every word is in a memo's tags or, unless it begins with "#", in its body.
  [[nodiscard]] bool matches(const SearchableText& text) const;
  // The text around the first typed word in the body of a memo that matches; empty when the word is
  // in a tag alone.
  [[nodiscard]] std::string snippet(const IndexedMemo& memo) const;
  // What is told of a memo that matches.
  [[nodiscard]] SearchResult result(Day day, const IndexedMemo& memo) const;

 private:
  struct Keyword {
    TextNeedle needle;
    BigramFilter::Query marks;
    bool isTag;
    bool spansLines;

    [[nodiscard]] bool isIn(const SearchableText& text) const;
  };

  std::vector<Keyword> keywords_;  // no duplicates, sorted by falling length: long ones are rarer
  std::size_t first_ = 0;          // index of the one that was typed first
};

}  // namespace nomely
