#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "bench/Random.h"

namespace nomely::bench {

// Words that the corpus is written with, of one kind, the frequent ones first.
class WordList {
 public:
  // `words`: separated by blanks. One word in `tailShare` is none of these but one of thousands
  // built from a stock of characters, most of them so rare that only large corpora hold them.
  explicit WordList(std::string_view words, std::uint32_t tailShare = 0);

  // Appends a word drawn by frequency.
  void appendTo(std::string& text, Random& random) const;

 private:
  std::vector<std::string_view> words_;
  Zipf frequency_;
  std::uint32_t tailShare_;
};

struct Vocabulary {
  WordList nouns;
  WordList verbs;
  WordList adjectives;
  WordList adverbs;
  WordList people;
  WordList places;
  WordList times;
  WordList english;
  WordList emoji;

  static const Vocabulary& shared();
};

// Sentence patterns: each capital stands for a word (T time, P person, L place, V verb, N noun, A
// adjective, D adverb, E English, C a count).
[[nodiscard]] std::string_view drawChinesePattern(Random& random);
[[nodiscard]] std::string_view drawMixedPattern(Random& random);
// These begin in lower case and end in a full stop and a blank.
[[nodiscard]] std::string_view drawEnglishPattern(Random& random);

// Full labels ("生活/读书"), the frequent ones first.
[[nodiscard]] const std::vector<std::string>& tagLabels();

}  // namespace nomely::bench
