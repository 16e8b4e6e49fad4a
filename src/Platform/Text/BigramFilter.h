#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace nomely {

// A Bloom filter over the characters of texts and the pairs of neighbouring characters: it tells
// without reading the texts that none of them can contain another text. Takes about a third of the
// text's size. Capital ASCII letters count as small ones. Immutable once filled; safe on any thread
// then.
class BigramFilter {
 public:
  // A text to look for, without capital ASCII letters.
  class Query {
   public:
    explicit Query(std::string_view text);

   private:
    friend class BigramFilter;
    std::vector<std::uint64_t> marks_;
  };

  // One filter over all these texts together.
  explicit BigramFilter(const std::vector<std::string_view>& texts);

  // False: no text contains it. True: one may; only reading the texts tells.
  [[nodiscard]] bool mayContain(const Query& query) const;

 private:
  [[nodiscard]] std::uint64_t place(std::uint32_t half) const {
    return half * std::uint64_t{bitCount_} >> 32U;
  }
  void set(std::uint64_t place) { words_[place / 64] |= std::uint64_t{1} << place % 64; }
  [[nodiscard]] bool isSet(std::uint64_t place) const {
    return (words_[place / 64] >> place % 64 & 1U) != 0;
  }

  std::uint32_t bitCount_;
  std::vector<std::uint64_t> words_;
};

}  // namespace nomely
