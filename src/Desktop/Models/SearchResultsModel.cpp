#include "Desktop/Models/SearchResultsModel.h"

#include <algorithm>

#include "Core/Extensions/TagNames.h"
#include "Core/Query/SearchSnippetKit.h"
#include "Desktop/Base/Qt.h"

namespace nomely {
namespace {

// A search for a tag has the whole text as its snippet; a row shows no more than two lines.
constexpr qsizetype longestRun = 120;

QString visibleTags(const SearchResult& result) {
  QStringList tags;
  for (const std::string& tag : result.tags)
    if (!TagNames::isHidden(tag)) tags << qt("#" + tag);
  return tags.join(QLatin1Char(' '));
}

}  // namespace

int SearchResultsModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(results_.size());
}

QHash<int, QByteArray> SearchResultsModel::roleNames() const {
  return {{Date, "date"},       {DateText, "dateText"},         {Time, "time"},
          {Snippet, "snippet"}, {PlainSnippet, "plainSnippet"}, {Tags, "tags"}};
}

QVariant SearchResultsModel::data(const QModelIndex& index, int role) const {
  if (index.row() < 0 || index.row() >= rowCount()) return {};
  const SearchResult& result = results_[static_cast<std::size_t>(index.row())];
  switch (role) {
    case Date:
      return qtDate(result.date);
    case DateText:
      return dateText(result.date);
    case Time:
      return qt(result.time);
    case Snippet:
      return snippet(result, Markup::html);
    case PlainSnippet:
      return snippet(result, Markup::none);
    case Tags:
      return visibleTags(result);
    default:
      return {};
  }
}

QString SearchResultsModel::dateText(Day day) const {
  const bool isThisYear = day.civil().year() == today_.civil().year();
  return qt((isThisYear ? sameYear_ : otherYear_).format(day));
}

QString SearchResultsModel::snippet(const SearchResult& result, Markup markup) const {
  const std::string line = result.snippet.empty()
                               ? SearchSnippetKit::tagFallbackSnippet(query_, result.tags)
                               : result.snippet;
  QString text;
  for (const auto& [run, isHit] : SearchSnippetKit::highlightedByMarkers(line)) {
    const bool isStart = text.isEmpty();
    const QString whole = qt(run);
    const bool isLong = whole.size() > longestRun;
    QString shown = whole.left(longestRun);
    if (isLong && shown.back().isHighSurrogate()) shown.chop(1);
    // Blanks at the ends of a run stand beside a hit.
    const bool blankBefore = !isStart && shown.front().isSpace();
    const bool blankAfter = shown.back().isSpace();
    shown = shown.simplified();
    if (isLong) shown += QStringLiteral("…");
    if (blankBefore) shown.prepend(QLatin1Char(' '));
    if (blankAfter && shown.size() > 1) shown += QLatin1Char(' ');
    if (markup == Markup::html) {
      shown = shown.toHtmlEscaped();
      if (isHit)
        shown = QStringLiteral("<span style=\"background-color:%1\">%2</span>")
                    .arg(mark_.name(), shown);
    }
    text += shown;
  }
  return text.trimmed();
}

void SearchResultsModel::setMark(const QColor& mark) {
  if (std::exchange(mark_, mark) == mark) return;
  emit markChanged();
  if (!results_.empty()) emit dataChanged(index(0), index(rowCount() - 1), {Snippet});
}

void SearchResultsModel::show(std::vector<SearchResult> results, std::string query) {
  beginResetModel();
  results_ = std::move(results);
  query_ = std::move(query);
  endResetModel();
  emit countChanged();
}

}  // namespace nomely
