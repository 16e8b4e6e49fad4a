#include "Desktop/Models/TagRows.h"

#include <QCollator>
#include <QObject>
#include <algorithm>
#include <functional>
#include <string_view>
#include <tuple>

#include "Core/Extensions/TagNames.h"
#include "Desktop/Base/Qt.h"

namespace nomely {
namespace {

using SortMode = TagConfig::SortMode;

std::string tr(const char* text) {
  return utf8(QObject::tr(text));
}

std::string_view nameOf(std::string_view tag) {
  return tag.substr(tag.rfind('/') + 1);
}

// By falling values; equal ones by the date of the newest memo.
bool comesBefore(const TagNode& left, const TagNode& right, SortMode mode) {
  const auto rank = [mode](const TagNode& node) {
    const std::int64_t first = mode == SortMode::count      ? node.count
                               : mode == SortMode::activity ? node.recent
                                                            : 0;
    return std::tuple(first, node.latest);
  };
  return rank(left) > rank(right);
}

class Rows {
 public:
  Rows(const TagSource& source, const TagView& view) : source_(source), view_(view) {
    collator_.setNumericMode(true);
  }

  std::vector<TagRow> made() {
    addPinned();
    if (!source_.roots.empty()) {
      heading("tags", tr("标签"));
      addNodes(source_.roots, 0);
    }
    addSection(TagNames::notesRoot, source_.notes);
    addSection(TagNames::personalColumnRoot, source_.personalColumn);
    addSection(TagNames::dedaoRoot, source_.dedao);
    return std::move(rows_);
  }

 private:
  TagRow& heading(std::string key, std::string label) {
    return rows_.emplace_back(TagRow{.kind = TagRow::Kind::heading,
                                     .key = std::move(key),
                                     .tag = {},
                                     .label = std::move(label)});
  }

  TagRow& tagRow(std::string_view section, const std::string& tag, std::string label) {
    TagRow& row = rows_.emplace_back(
        TagRow{.key = std::string(section) + ":" + tag, .tag = tag, .label = std::move(label)});
    row.isPinned = std::ranges::find(view_.pinned, tag) != view_.pinned.end();
    const auto dress = [&](const std::map<std::string, std::string>& looks, std::string& look) {
      if (const auto found = looks.find(tag); found != looks.end()) look = found->second;
    };
    dress(view_.config.colors, row.color);
    dress(view_.config.emojis, row.emoji);
    return row;
  }

  // A pinned tag that no memo has any more stays, so that it can be let go.
  void addPinned() {
    if (view_.pinned.empty()) return;
    TagRow& over = heading(TagRows::pinnedKey, tr("置顶标签"));
    over.opens = true;
    over.isOpen = view_.isPinnedOpen;
    if (!view_.isPinnedOpen) return;
    for (const std::string& tag : view_.pinned) {
      const TagNode* node = find(tag);
      tagRow("pinned", tag, tag).count = node ? node->count : 0;
    }
  }

  [[nodiscard]] const TagNode* find(const std::string& tag) const {
    const std::vector<TagNode>* level = &source_.roots;
    const TagNode* node = nullptr;
    for (std::size_t slash = tag.find('/', 1);; slash = tag.find('/', slash + 1)) {
      const auto found = std::ranges::find(*level, tag.substr(0, slash), &TagNode::tag);
      if (found == level->end()) return nullptr;
      node = &*found;
      level = &found->children;
      if (slash == std::string::npos) return node;
    }
  }

  void addNodes(const std::vector<TagNode>& nodes, int depth) {
    for (const TagNode* node : sorted(nodes)) {
      TagRow& row = tagRow("tag", node->tag, std::string(nameOf(node->tag)));
      row.count = node->count;
      row.depth = depth;
      row.opens = !node->children.empty();
      row.isOpen = row.opens && view_.open.contains(node->tag);
      if (row.isOpen) addNodes(node->children, depth + 1);
    }
  }

  [[nodiscard]] std::vector<const TagNode*> sorted(const std::vector<TagNode>& nodes) const {
    std::vector<const TagNode*> order;
    order.reserve(nodes.size());
    for (const TagNode& node : nodes) order.push_back(&node);
    if (view_.config.sortMode == SortMode::name) return byName(order);
    std::ranges::stable_sort(order, [&](const TagNode* left, const TagNode* right) {
      return comesBefore(*left, *right, view_.config.sortMode);
    });
    return order;
  }

  [[nodiscard]] std::vector<const TagNode*> byName(const std::vector<const TagNode*>& nodes) const {
    std::vector<std::pair<QCollatorSortKey, const TagNode*>> keyed;
    keyed.reserve(nodes.size());
    for (const TagNode* node : nodes)
      keyed.emplace_back(collator_.sortKey(qt(nameOf(node->tag))), node);
    std::ranges::stable_sort(keyed, [](const auto& left, const auto& right) {
      return left.first.compare(right.first) < 0;
    });
    std::vector<const TagNode*> order;
    order.reserve(nodes.size());
    for (const auto& [key, node] : keyed) order.push_back(node);
    return order;
  }

  void addSection(std::string_view root, const SidebarTagSummary& summary) {
    if (summary.count == 0) return;
    TagRow& over = heading(std::string(root), std::string(root));
    over.tag = root;
    over.count = summary.count;
    for (const TagUse& use : summary.tags) {
      const std::string below = use.tag.substr(root.size() + 1);
      // The notes' section lists tags under its root that their memos have without it.
      const bool isStored = source_.stored.contains(use.tag);
      TagRow& row = tagRow(root, isStored ? use.tag : below, below);
      row.count = use.count;
      row.isCollection = true;
    }
  }

  const TagSource& source_;
  const TagView& view_;
  QCollator collator_{QLocale(QLocale::Chinese, QLocale::China)};
  std::vector<TagRow> rows_;
};

}  // namespace

std::vector<TagRow> TagRows::of(const TagSource& source, const TagView& view) {
  return Rows(source, view).made();
}

}  // namespace nomely
