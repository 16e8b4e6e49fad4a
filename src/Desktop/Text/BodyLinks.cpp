#include "Desktop/Text/BodyLinks.h"

#include <QUrl>
#include <algorithm>

#include "Core/Markdown/Text/LinkDetector.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"
#include "Desktop/Base/Qt.h"
#include "Desktop/Text/BodySegment.h"

namespace nomely {

void BodyLinks::setMemo(const MemoHandle& memo) {
  if (memo == memo_) return;
  memo_ = memo;
  // A bar is for a few; a body that is a list of links shows them itself.
  constexpr std::size_t mostLinks = 12;
  constexpr std::size_t mostRead = 60'000;
  std::vector<Link> links;
  if (memo_.isValid()) {
    const std::string body = MemoTextUtilities::stripOriginalComment(memo_.entry.memo->body);
    const auto found = LinkDetector::links(body.substr(0, fittingLength(body, mostRead)));
    for (const DetectedLink& link : *found) {
      if (links.size() == mostLinks) break;
      links.push_back({qt(link.url), qt(link.title), QUrl(qt(link.url)).host()});
    }
  }
  if (links != links_) {
    beginResetModel();
    links_ = std::move(links);
    endResetModel();
  }
  emit shownChanged();
}

int BodyLinks::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(links_.size());
}

QVariant BodyLinks::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
  const Link& link = links_[static_cast<std::size_t>(index.row())];
  switch (role) {
    case Address:
      return link.address;
    case Title:
      return link.title;
    case Host:
      return link.host;
    default:
      return {};
  }
}

QHash<int, QByteArray> BodyLinks::roleNames() const {
  return {{Address, "address"}, {Title, "title"}, {Host, "host"}};
}

}  // namespace nomely
