#include "Core/Query/SearchQuery.h"

#include <algorithm>

#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Query/SearchSnippetKit.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

bool holdsLineBreak(std::string_view text) {
  for (; !text.empty(); text.remove_prefix(decodeFirst(text).length))
    if (isLineBreak(decodeFirst(text).value)) return true;
  return false;
}

}  // namespace

SearchQuery::SearchQuery(std::string_view text) {
  text = trimHorizontal(text);
  while (!text.empty()) {
    const std::string_view word = text.substr(0, text.find(' '));
    text.remove_prefix(std::min(text.size(), word.size() + 1));
    if (word.empty()) continue;
    const bool isTag = word.starts_with('#');
    const TextNeedle needle(word.substr(isTag ? 1 : 0));
    keywords_.push_back(
        {needle, BigramFilter::Query(needle.folded()), isTag, holdsLineBreak(needle.folded())});
  }
  if (keywords_.empty()) return;
  // Each word is looked for once, and long words first: they are rarer, so most memos drop out
  // early.
  const std::string first = keywords_.front().needle.folded();
  const bool firstIsTag = keywords_.front().isTag;
  const auto key = [](const Keyword& keyword) {
    const std::string& folded = keyword.needle.folded();
    return std::tuple(-static_cast<std::ptrdiff_t>(folded.size()), std::cref(folded).get(),
                      keyword.isTag);
  };
  std::ranges::sort(keywords_, {}, key);
  const auto [begin, end] = std::ranges::unique(keywords_, {}, key);
  keywords_.erase(begin, end);
  first_ = static_cast<std::size_t>(std::ranges::find_if(keywords_,
                                                         [&](const Keyword& keyword) {
                                                           return keyword.isTag == firstIsTag &&
                                                                  keyword.needle.folded() == first;
                                                         }) -
                                    keywords_.begin());
}

std::string SearchQuery::typed(std::string_view text) {
  std::string query;
  while (!text.empty()) {
    const DecodedCharacter character = decodeFirst(text);
    appendUtf8(query, isHorizontalSpace(character.value) ? U' ' : character.value);
    text.remove_prefix(character.length);
  }
  return query;
}

bool SearchQuery::Keyword::isIn(const SearchableText& text) const {
  return (!isTag && needle.isInFolded(text.body)) || needle.isInFolded(text.tags);
}

bool SearchQuery::mayMatch(const MemoCache::DayMemos& day) const {
  const BigramFilter* const filter = day.filter();
  return filter == nullptr || std::ranges::all_of(keywords_, [&](const Keyword& keyword) {
           return filter->mayContain(keyword.marks);
         });
}

bool SearchQuery::mayMatchFile(std::string_view content) const {
  // A word stands in the file as it reads, unless a tag is escaped, or YAML joins lines to it.
  const auto mayHold = [&](const Keyword& keyword) {
    return keyword.spansLines || keyword.needle.mayBeInPartOf(content);
  };
  return std::ranges::all_of(keywords_, mayHold) || MemoFrontmatterParser::mayEscape(content);
}

bool SearchQuery::matches(const SearchableText& text) const {
  return std::ranges::all_of(keywords_, [&](const Keyword& keyword) { return keyword.isIn(text); });
}

std::string SearchQuery::snippet(const IndexedMemo& memo) const {
  const Keyword& keyword = keywords_[first_];
  if (!keyword.isTag && !keyword.needle.isInFolded(memo.text().body)) return {};
  return SearchSnippetKit::makeSnippet(memo.memo().body, keyword.needle);
}

SearchResult SearchQuery::result(Day day, const IndexedMemo& memo) const {
  return {.date = day,
          .seqNumber = memo.memo().seqNumber,
          .time = memo.memo().time,
          .body = memo.memo().body,
          .tags = memo.memo().tags,
          .snippet = snippet(memo)};
}

}  // namespace nomely
