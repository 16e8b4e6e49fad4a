#include <fmt/format.h>

#include "CLI/Arguments.h"
#include "CLI/Command.h"
#include "CLI/MemoOutput.h"
#include "CLI/MemoSelection.h"
#include "CLI/PagedOutput.h"
#include "CLI/UsageError.h"
#include "Core/Query/SearchSnippetKit.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr std::size_t usualLimit = 50;

Json jsonOf(const SearchResult& result) {
  return {{"date", result.date.string()}, {"seqNumber", result.seqNumber},
          {"time", result.time},          {"body", result.body},
          {"tags", result.tags},          {"snippet", result.snippet}};
}

std::string referenceOf(const SearchResult& result) {
  return fmt::format("{}/{}", result.date.string(), result.seqNumber);
}

class SearchCommand final : public Command {
 public:
  void declare(Syntax& syntax) override {
    syntax.add({.name = "QUERY",
                .help = "关键词，以空格分隔，须同时出现；以 # 开头的只找标签",
                .target = &words_});
    syntax.add({.name = "-e,--query",
                .help = "关键词，可重复；以“-”开头的也行",
                .target = &more_,
                .value = "QUERY"});
    selection_.declare(syntax);
    syntax.add({.name = "--count", .help = "只说有多少条", .target = &count_});
    syntax.add({.name = "--oneline", .help = "每条一行：引用、时间、首行", .target = &oneLine_});
    syntax.examples = {"nomely search 读书 笔记 --from 2025-01-01", "nomely search '#工作' --count",
                       "nomely search -e -42"};
  }

  void run(Session& session) override {
    const std::string text = query();
    const SearchQuery query(text);
    if (query.isEmpty()) throw UsageError("请给出要找的文字，如 nomely search 读书");
    if (count_) return printCount(query, session);
    const PagedOutput pager(session);
    const Style style = session.style();
    const std::size_t limit = selection_.limit().value_or(usualLimit);
    std::size_t found = 0;
    forEach(session, query, [&](const SearchResult& result) {
      if (found == limit) {
        MemoSelection::tellOfMore(session, limit);
        return false;
      }
      print(result, found++, text, style, session);
      return true;
    });
    if (session.isJson()) return session.print(found == 0 ? "[]\n" : "]\n");
    if (found == 0 && session.hasRoot())
      session.say(fmt::format("没有找到“{}”。", shortened(text)));
  }

 private:
  // The words of both kinds.
  [[nodiscard]] std::string query() const {
    std::vector<std::string> all = words_;
    all.insert(all.end(), more_.begin(), more_.end());
    const std::string typed = Arguments::joined(all).value_or("");
    if (!isValidUtf8(typed)) throw UsageError("要找的文字不是有效的 UTF-8 文本");
    return SearchQuery::typed(typed);
  }

  void forEach(Session& session, const SearchQuery& query,
               const std::function<bool(const SearchResult&)>& visit) const {
    session.scan()->search(query, selection_.filter(session), selection_.order(),
                           [&](SearchResult&& result) { return visit(result); });
  }

  void printCount(const SearchQuery& query, Session& session) const {
    std::size_t found = 0;
    const std::size_t most = selection_.limit().value_or(SIZE_MAX);
    forEach(session, query, [&](const SearchResult&) { return ++found < most; });
    if (session.isJson())
      session.printJson({{"count", found}});
    else
      session.print(fmt::format("{}\n", found));
  }

  void print(const SearchResult& result, std::size_t index, const std::string& text,
             const Style& style, const Session& session) const {
    if (session.isJson())
      session.print((index == 0 ? "[" : ",\n ") +
                    jsonOf(result).dump(-1, ' ', false, Json::error_handler_t::replace));
    else if (oneLine_)
      session.print(MemoOutput::oneLine(referenceOf(result), result.time, result.body));
    else
      session.print(textOf(result, text, style));
  }

  static std::string textOf(const SearchResult& result, const std::string& query,
                            const Style& style) {
    std::string text =
        style.dim(fmt::format("{} {}", referenceOf(result), Terminal::printable(result.time))) +
        "\n";
    const std::string line = result.snippet.empty()
                                 ? SearchSnippetKit::tagFallbackSnippet(query, result.tags)
                                 : result.snippet;
    for (const auto& [run, isHighlighted] : SearchSnippetKit::highlightedByMarkers(line)) {
      const std::string shown = Terminal::printable(run);
      text += isHighlighted ? style.bold(style.warning(shown)) : shown;
    }
    return text + "\n\n";
  }

  static std::string shortened(const std::string& query) {
    constexpr std::size_t longest = 40;
    const std::string_view start = graphemePrefix(query, longest);
    return Terminal::printable(start) + (start.size() < query.size() ? "…" : "");
  }

  MemoSelection selection_{MemoSelection::Default::everything};
  std::vector<std::string> words_;
  std::vector<std::string> more_;
  bool count_ = false;
  bool oneLine_ = false;
};

}  // namespace

std::unique_ptr<Command> makeSearchCommand() {
  return std::make_unique<SearchCommand>();
}

}  // namespace nomely
