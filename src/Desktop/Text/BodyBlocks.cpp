#include "Desktop/Text/BodyBlocks.h"

#include <algorithm>

#include "Core/Markdown/Inline/MemoBodyKit.h"
#include "Core/Markdown/MarkdownTextView.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"

namespace nomely {
namespace {

// What a card could not lay out without a pause.
constexpr std::size_t mostCharacters = 20'000;
constexpr std::ptrdiff_t mostLines = 400;

bool hasMoreCharacters(std::string_view text, std::size_t count) {
  const auto begins = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; };
  return text.size() > count &&
         static_cast<std::size_t>(std::ranges::count_if(text, begins)) > count;
}

// A preview counts characters, of which a single one may be any number of bytes.
std::string preview(std::string_view text) {
  constexpr std::size_t longest = 3'000;
  std::string shown = MemoBodyKit::collapsedPreview(text);
  if (shown.size() > longest) shown.resize(fittingLength(shown, longest));
  return shown;
}

}  // namespace

void BodyBlocks::setMemo(const MemoHandle& memo) {
  if (memo == memo_) return;
  memo_ = memo;
  update();
}

void BodyBlocks::setExpanded(bool isExpanded) {
  if (isExpanded == isExpanded_) return;
  isExpanded_ = isExpanded;
  update();
}

void BodyBlocks::setWhole(bool isWhole) {
  if (isWhole == isWhole_) return;
  isWhole_ = isWhole;
  update();
}

int BodyBlocks::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(segments_.size());
}

QVariant BodyBlocks::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
  const BodySegment& segment = segments_[static_cast<std::size_t>(index.row())];
  switch (role) {
    case KindRole:
      return segment.kind;
    case Segment:
      return QVariant::fromValue(segment);
    case StandsClose:
      return segment.standsClose;
    default:
      return {};
  }
}

QHash<int, QByteArray> BodyBlocks::roleNames() const {
  return {{KindRole, "kind"}, {Segment, "segment"}, {StandsClose, "standsClose"}};
}

void BodyBlocks::update() {
  const std::string body =
      memo_.isValid() ? MemoTextUtilities::stripOriginalComment(memo_.entry.memo->body) : "";
  collapses_ = MemoBodyKit::shouldCollapse(body);
  isTooLong_ =
      hasMoreCharacters(body, mostCharacters) || std::ranges::count(body, '\n') > mostLines;
  const bool isAll = isWhole_ || !collapses_ || (isExpanded_ && !isTooLong_);
  show(bodySegments(*MarkdownTextView::blocks(isAll ? body : preview(body))));
  emit shownChanged();
}

// As many rows as there are before and after change in place, where they do; those at the end that
// are the same stay.
void BodyBlocks::show(std::vector<BodySegment> segments) {
  const auto had = std::ssize(segments_);
  const auto has = std::ssize(segments);
  const auto most = std::min(had, has);
  const auto tail = std::mismatch(segments.rbegin(), segments.rbegin() + most, segments_.rbegin(),
                                  [](const auto& a, const auto& b) { return a.isSameAs(b); })
                        .first -
                    segments.rbegin();
  const auto kept = most - tail;
  for (std::ptrdiff_t row = 0; row < kept; ++row) {
    const auto at = static_cast<std::size_t>(row);
    if (segments_[at].isSameAs(segments[at])) continue;
    segments_[at] = segments[at];
    emit dataChanged(index(static_cast<int>(row)), index(static_cast<int>(row)));
  }
  if (had > has) {
    beginRemoveRows({}, static_cast<int>(kept), static_cast<int>(kept + had - has) - 1);
    segments_.erase(segments_.begin() + kept, segments_.begin() + kept + had - has);
    endRemoveRows();
  } else if (has > had) {
    beginInsertRows({}, static_cast<int>(kept), static_cast<int>(kept + has - had) - 1);
    segments_.insert(segments_.begin() + kept, segments.begin() + kept,
                     segments.begin() + kept + has - had);
    endInsertRows();
  }
}

}  // namespace nomely
