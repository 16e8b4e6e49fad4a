#include "Core/Query/TagTree.h"

#include <algorithm>

#include "Core/Extensions/TagNames.h"
#include "Core/Query/MemoEntry.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

bool isOfTheTree(std::string_view tag) {
  return !tag.empty() && !TagNames::isHidden(tag) &&
         std::ranges::none_of(TagNames::sectionRoots, [&](std::string_view root) {
           return TagNames::isOrIsBelow(tag, root);
         });
}

}  // namespace

void TagTree::add(Day day, const Memo& memo) {
  if (memo.tags.empty() || !isVisible(memo)) return;
  ofMemo_.clear();
  for (const std::string& text : memo.tags) {
    const std::string_view tag = trimHorizontal(text);
    if (!isOfTheTree(tag)) continue;
    for (std::size_t slash = tag.find('/', 1); slash != std::string_view::npos;
         slash = tag.find('/', slash + 1))
      ofMemo_.push_back(tag.substr(0, slash));
    ofMemo_.push_back(tag);
  }
  std::ranges::sort(ofMemo_);
  const auto repeated = std::ranges::unique(ofMemo_);
  ofMemo_.erase(repeated.begin(), repeated.end());
  for (const std::string_view tag : ofMemo_) count(tag, day, memo.seqNumber);
}

void TagTree::count(std::string_view tag, Day day, std::int64_t seqNumber) {
  auto found = nodes_.find(tag);
  if (found == nodes_.end()) found = nodes_.emplace(tag, TagNode{.tag = std::string(tag)}).first;
  TagNode& node = found->second;
  ++node.count;
  if (day >= activeSince_) ++node.recent;
  node.latest = std::max(node.latest, {day, seqNumber});
}

std::vector<TagNode> TagTree::roots() const {
  std::vector<TagNode> roots;
  for (const auto& [tag, node] : nodes_) {
    // Its parents came before it: they are shorter, and beginnings of it.
    std::vector<TagNode>* siblings = &roots;
    for (std::size_t slash = tag.find('/', 1); slash != std::string::npos;
         slash = tag.find('/', slash + 1))
      siblings =
          &std::ranges::find(*siblings, std::string_view(tag).substr(0, slash), &TagNode::tag)
               ->children;
    siblings->push_back(node);
  }
  return roots;
}

}  // namespace nomely
