#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "Core/Markdown/Text/WordDiff.h"
#include "Core/Models/Memo.h"

namespace nomely {

// What became of a memo from one version to a later one, as a reader sees it. Shared, since the
// words are parts of the texts in it. Any thread.
class VersionComparison {
 public:
  // May take as long as wordDiff.
  [[nodiscard]] static std::shared_ptr<const VersionComparison> of(const Memo& before,
                                                                   const Memo& after);
  VersionComparison(const VersionComparison&) = delete;
  VersionComparison& operator=(const VersionComparison&) = delete;

  [[nodiscard]] const std::vector<WordChange>& words() const { return words_; }
  // As lengths of memos are counted: by ideographs and words.
  [[nodiscard]] std::size_t addedCount() const { return addedCount_; }
  [[nodiscard]] std::size_t removedCount() const { return removedCount_; }

  enum class Part { tag, attachment };
  // A tag, by its name, or an attachment, by the name that users see, that one of the two has
  // alone.
  struct Item {
    Part part;
    WordChange::Kind kind;
    std::string name;

    friend bool operator==(const Item&, const Item&) = default;
  };
  [[nodiscard]] const std::vector<Item>& items() const { return items_; }

  // Whether the texts, the tags and the attachments are the same: what else may differ shows in no
  // text.
  [[nodiscard]] bool isEmpty() const;

 private:
  VersionComparison(const Memo& before, const Memo& after);

  std::string before_;
  std::string after_;
  std::vector<WordChange> words_;
  std::vector<Item> items_;
  std::size_t addedCount_ = 0;
  std::size_t removedCount_ = 0;
};

}  // namespace nomely
