#include "Editor/History/VersionComparison.h"

#include <algorithm>

#include "Core/Extensions/AttachmentNamingKit.h"
#include "Core/Extensions/TagNames.h"
#include "Core/Extensions/TextStats.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"

namespace nomely {
namespace {

using Item = VersionComparison::Item;
using Part = VersionComparison::Part;
using Names = std::vector<std::string>;

std::string nameOf(const Memo& memo, Part part, const std::string& name) {
  if (part == Part::tag) return name;
  const auto original = memo.originalNames.find(name);
  return AttachmentNamingKit::displayName(
      name, original == memo.originalNames.end() ? std::nullopt : std::optional(original->second));
}

void addMissing(const Memo& memo, const Memo& other, Part part, WordChange::Kind kind,
                std::vector<Item>& items) {
  const auto namesIn = [part](const Memo& each) -> const Names& {
    return part == Part::tag ? each.tags : each.attachments;
  };
  for (const std::string& name : namesIn(memo))
    if (std::ranges::find(namesIn(other), name) == namesIn(other).end() &&
        !(part == Part::tag && TagNames::isHidden(name)))
      items.push_back({part, kind, nameOf(memo, part, name)});
}

}  // namespace

std::shared_ptr<const VersionComparison> VersionComparison::of(const Memo& before,
                                                               const Memo& after) {
  return std::shared_ptr<const VersionComparison>(new VersionComparison(before, after));
}

VersionComparison::VersionComparison(const Memo& before, const Memo& after)
    : before_(MemoTextUtilities::stripOriginalComment(before.body)),
      after_(MemoTextUtilities::stripOriginalComment(after.body)),
      words_(wordDiff(before_, after_)) {
  using Kind = WordChange::Kind;
  for (const auto& [kind, text] : words_) {
    if (kind == Kind::added) addedCount_ += TextStats::meaningfulCount(text);
    if (kind == Kind::removed) removedCount_ += TextStats::meaningfulCount(text);
  }
  for (const Part part : {Part::tag, Part::attachment}) {
    addMissing(before, after, part, Kind::removed, items_);
    addMissing(after, before, part, Kind::added, items_);
  }
}

bool VersionComparison::isEmpty() const {
  return before_ == after_ && items_.empty();
}

}  // namespace nomely
