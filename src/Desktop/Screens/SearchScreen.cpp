#include "Desktop/Screens/SearchScreen.h"

#include <algorithm>
#include <utility>

#include "App/Application.h"
#include "Core/Query/SearchQuery.h"
#include "Desktop/Base/Navigation.h"
#include "Desktop/Base/Qt.h"
#include "Desktop/Screens/TimelineScreen.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

using std::chrono::milliseconds;
using Stopwatch = std::chrono::steady_clock;

// A quick search runs at each key; one that takes long lets keys in quick succession pass, but no
// longer, as what is found should stand 60 ms after the last of them.
constexpr milliseconds quick{30};
constexpr milliseconds typingPause{20};
constexpr milliseconds patience{400};

struct Answer {
  std::vector<SearchResult> found;
  milliseconds took;
};

}  // namespace

SearchScreen::SearchScreen(const ScreenContext& context, TimelineScreen& timeline,
                           std::size_t limit)
    : context_(context), timeline_(timeline), limit_(limit), work_(context.executor, context.jobs) {
  pause_.setSingleShot(true);
  connect(&pause_, &QTimer::timeout, this, &SearchScreen::search);
  patience_.setSingleShot(true);
  patience_.setInterval(patience);
  connect(&patience_, &QTimer::timeout, this, [this] { setSlow(true); });
  connect(&timeline_, &TimelineScreen::listChanged, this, &SearchScreen::followTimeline);
}

SearchScreen::~SearchScreen() = default;

std::string SearchScreen::words() const {
  return std::string(trimHorizontal(SearchQuery::typed(utf8(query_))));
}

bool SearchScreen::hasWords() const {
  return !SearchQuery(words()).isEmpty();
}

bool SearchScreen::foundNothing() const {
  return hasWords() && !answered_.empty() && results_.results().empty();
}

QString SearchScreen::nothingText() const {
  return tr("没有找到「%1」").arg(qt(answered_));
}

void SearchScreen::setQuery(const QString& query) {
  if (std::exchange(query_, query) == query) return;
  emit queryChanged();
  if (!hasWords()) {
    pause_.stop();
    return show({}, {});
  }
  pause_.start(lastTook_ < quick ? milliseconds(0) : typingPause);
}

// One search at a time: what was typed while it ran is looked for when it ends.
void SearchScreen::search() {
  if (isSearching_ || !hasWords() || words() == answered_) return;
  isSearching_ = true;
  patience_.start();
  const auto ended = [this](const std::string& asked) {
    isSearching_ = false;
    patience_.stop();
    setSlow(false);
    if (words() == asked) return true;
    if (hasWords() && !pause_.isActive()) search();
    return false;
  };
  work_.run(
      [&index = context_.application.searchIndex(), asked = words(),
       limit = limit_](const std::stop_token&) {
        const auto begin = Stopwatch::now();
        std::vector<SearchResult> found = index.search(asked, limit);
        return Answer{std::move(found),
                      std::chrono::duration_cast<milliseconds>(Stopwatch::now() - begin)};
      },
      [this, ended, asked = words()](Answer&& answer) {
        lastTook_ = answer.took;
        if (ended(asked)) show(std::move(answer.found), asked);
      },
      [ended, asked = words()](const std::string&) { (void)ended(asked); });
}

void SearchScreen::show(std::vector<SearchResult>&& found, const std::string& words) {
  const auto& before = results_.results();
  int chosen = -1;
  if (current_ >= 0) {
    const SearchResult& kept = before[static_cast<std::size_t>(current_)];
    const auto place = std::ranges::find_if(found, [&](const SearchResult& result) {
      return result.date == kept.date && result.seqNumber == kept.seqNumber;
    });
    if (place != found.end()) chosen = static_cast<int>(place - found.begin());
  }
  answered_ = words;
  results_.setToday(context_.clock.today());
  results_.show(std::move(found), words);
  current_ = chosen;
  emit currentChanged();
  emit answered();
}

void SearchScreen::setSlow(bool isSlow) {
  if (std::exchange(isSlow_, isSlow) != isSlow) emit slowChanged();
}

void SearchScreen::setCurrent(int row) {
  const int chosen = std::clamp(row, -1, results_.rowCount() - 1);
  if (std::exchange(current_, chosen) != chosen) emit currentChanged();
}

void SearchScreen::moveCurrent(int step) {
  setCurrent(current_ + step);
}

void SearchScreen::accept() {
  if (current_ >= 0)
    open(current_);
  else
    showAll();
}

void SearchScreen::open(int row) {
  if (row < 0 || row >= results_.rowCount()) return;
  const SearchResult& result = results_.results()[static_cast<std::size_t>(row)];
  context_.navigation.show(Navigation::Timeline);
  isOpening_ = true;
  timeline_.revealFound(qtDate(result.date), static_cast<int>(result.seqNumber));
  isOpening_ = false;
  setShown(true);
  emit opened();
}

void SearchScreen::showAll() {
  if (!hasWords()) return;
  context_.navigation.show(Navigation::Timeline);
  timeline_.showSearch(qt(words()));
  setShown(true);
  emit opened();
}

void SearchScreen::leave() {
  setQuery({});
  const bool wasShown = isShown_;
  setShown(false);
  if (wasShown) timeline_.leaveSearch();
}

void SearchScreen::setShown(bool isShown) {
  if (std::exchange(isShown_, isShown) != isShown) emit shownChanged();
}

// Once another list was chosen, the words would say of it what isn't so.
void SearchScreen::followTimeline() {
  if (!isShown_ || isOpening_ || timeline_.list() == TimelineScreen::Search) return;
  setShown(false);
  setQuery({});
}

}  // namespace nomely
