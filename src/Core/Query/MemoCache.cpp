#include "Core/Query/MemoCache.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <ranges>

namespace nomely {
namespace {

// A byte that occurs in no well-formed text, so that no needle matches across two tags.
constexpr char tagSeparator = '\xFF';

std::string joinedFolded(const std::vector<std::string>& tags) {
  std::string joined;
  for (const std::string& tag : tags) {
    if (!joined.empty()) joined += tagSeparator;
    joined += foldedText(tag);
  }
  joined.shrink_to_fit();
  return joined;
}

}  // namespace

IndexedMemo::IndexedMemo(Memo&& memo)
    : memo_(std::move(memo)), foldedTags_(joinedFolded(memo_.tags)) {
  memo_.body.shrink_to_fit();
  if (isSearchableAsItIs(memo_.body)) return;
  if (auto folded = foldedBeyondAscii(memo_.body))
    foldedBody_ = std::make_unique<const std::string>(std::move(*folded));
}

MemoCache::DayMemos::DayMemos(Day date, Memos memos) : date_(date), memos_(std::move(memos)) {
  texts_.reserve(memos_.size());
  for (const auto& memo : memos_) texts_.push_back(memo->text());
  const auto number = [](const auto& memo) { return memo->memo().seqNumber; };
  if (memos_.empty()) return;
  lowest_ = std::ranges::min(memos_ | std::views::transform(number));
  highest_ = std::ranges::max(memos_ | std::views::transform(number));
}

std::size_t MemoCache::DayMemos::indexOf(std::int64_t seqNumber) const {
  if (seqNumber < lowest_ || seqNumber > highest_) return memos_.size();
  const auto at =
      std::ranges::find(memos_, seqNumber, [](const auto& memo) { return memo->memo().seqNumber; });
  return static_cast<std::size_t>(at - memos_.begin());
}

void MemoCache::DayMemos::makeFilter() const {
  std::vector<std::string_view> texts;
  for (const auto& memo : memos_) {
    texts.push_back(memo->text().body);
    texts.push_back(memo->text().tags);
  }
  auto made = std::make_unique<const BigramFilter>(texts);
  const BigramFilter* none = nullptr;
  if (filter_.compare_exchange_strong(none, made.get())) (void)made.release();
}

std::shared_ptr<const MemoCache::DayMemos> MemoCache::sortedDay(Day date, Memos memos) {
  std::ranges::sort(memos, [](const auto& left, const auto& right) {
    return orderedBeforeInDay(left->memo(), right->memo());
  });
  return std::make_shared<const DayMemos>(date, std::move(memos));
}

MemoCache::MemoCache(Days days) : days_(std::move(days)) {
  std::erase_if(days_, [](const auto& day) { return !day || day->memos().empty(); });
}

std::span<const std::shared_ptr<const MemoCache::DayMemos>> MemoCache::piecesOf(Day date) const {
  const auto pieces = std::ranges::equal_range(days_, date, std::greater(),
                                               [](const auto& piece) { return piece->date(); });
  return {pieces.begin(), pieces.end()};
}

std::shared_ptr<const MemoCache> MemoCache::replacing(
    std::span<const std::shared_ptr<const DayMemos>> pieces, Day date, const Memos& memos) const {
  // One that has grown too large is halved, and one that was built large is cut up.
  const std::size_t size = memos.size() > largestPiece ? largestPiece / 2 : largestPiece;
  const auto begin = days_.begin() + (pieces.data() - days_.data());
  Days days;
  days.reserve(days_.size() + memos.size() / size + 1);
  days.insert(days.end(), days_.begin(), begin);
  for (std::size_t at = 0; at < memos.size(); at += size) {
    const std::span piece = std::span(memos).subspan(at, std::min(size, memos.size() - at));
    days.push_back(std::make_shared<const DayMemos>(date, Memos(piece.begin(), piece.end())));
  }
  days.insert(days.end(), begin + static_cast<std::ptrdiff_t>(pieces.size()), days_.end());
  auto changed = std::make_shared<MemoCache>(std::move(days));
  changed->filtersClaimed_ = filtersClaimed_.load();
  return changed;
}

std::shared_ptr<const MemoCache> MemoCache::with(Memo memo, Day date) const {
  const auto pieces = piecesOf(date);
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    const std::size_t at = pieces[i]->indexOf(memo.seqNumber);
    if (at == pieces[i]->memos().size()) continue;
    Memos memos = pieces[i]->memos();
    memos[at] = std::make_shared<IndexedMemo>(std::move(memo));
    return replacing(pieces.subspan(i, 1), date, memos);
  }
  const auto isLater = [&](const auto& other) { return orderedBeforeInDay(memo, other->memo()); };
  auto piece = std::ranges::find_if(
      pieces, [&](const auto& each) { return std::ranges::any_of(each->memos(), isLater); });
  if (piece == pieces.end() && !pieces.empty()) --piece;
  const bool isFirst = pieces.empty();
  Memos memos = isFirst ? Memos() : (*piece)->memos();
  const auto place = std::ranges::find_if(memos, isLater);
  memos.insert(place, std::make_shared<IndexedMemo>(std::move(memo)));
  return replacing(isFirst ? pieces : std::span(piece, 1), date, memos);
}

std::shared_ptr<const MemoCache> MemoCache::withDays(const std::vector<Day>& days,
                                                     Days memos) const {
  std::ranges::copy_if(days_, std::back_inserter(memos), [&](const auto& piece) {
    return !std::ranges::binary_search(days, piece->date());
  });
  std::erase(memos, nullptr);
  std::ranges::stable_sort(memos, std::greater(), [](const auto& piece) { return piece->date(); });
  auto changed = std::make_shared<MemoCache>(std::move(memos));
  changed->filtersClaimed_ = filtersClaimed_.load();
  return changed;
}

std::shared_ptr<const MemoCache> MemoCache::without(Day date, std::int64_t seqNumber) const {
  const auto pieces = piecesOf(date);
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    const std::size_t at = pieces[i]->indexOf(seqNumber);
    if (at == pieces[i]->memos().size()) continue;
    Memos memos = pieces[i]->memos();
    memos.erase(memos.begin() + static_cast<std::ptrdiff_t>(at));
    return replacing(pieces.subspan(i, 1), date, memos);
  }
  return replacing(pieces.subspan(0, 0), date, {});
}

}  // namespace nomely
