#include <fmt/format.h>

#include "CLI/Checks.h"
#include "CLI/Command.h"
#include "CLI/MemoOutput.h"
#include "CLI/UsageError.h"
#include "Core/Query/SearchSnippetKit.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

class SearchCommand final : public Command {
 public:
  void declare(CLI::App& app) override {
    app.add_option("QUERY", query_, "关键词，以空格分隔，须同时出现；#开头只找标签")->required();
    app.add_option("-n,--limit", limit_, "最多几条，默认 50")
        ->type_name("N")
        ->check(Checks::positive("-n "));
  }

  void run(Session& session) override {
    if (!isValidUtf8(query_) || trimHorizontal(query_).empty())
      throw UsageError("请给出要找的文字，如 nomely search 读书");
    const std::vector<SearchResult> results =
        session.application().searchIndex().search(query_, static_cast<std::size_t>(limit_));
    if (session.isJson()) return session.printJson(jsonOf(results));
    const PagedOutput pager(session.environment(), session.isJson());
    for (const SearchResult& result : results) session.print(textOf(result, session.style()));
    if (results.empty()) session.say(fmt::format("没有找到“{}”。", shortQuery()));
  }

 private:
  static Json jsonOf(const std::vector<SearchResult>& results) {
    Json json = Json::array();
    for (const SearchResult& result : results)
      json.push_back({{"date", result.date.string()},
                      {"seqNumber", result.seqNumber},
                      {"time", result.time},
                      {"body", result.body},
                      {"tags", result.tags},
                      {"snippet", result.snippet}});
    return json;
  }

  [[nodiscard]] std::string textOf(const SearchResult& result, const Style& style) const {
    std::string text = style.dim(fmt::format("{}/{} {}", result.date.string(), result.seqNumber,
                                             Terminal::printable(result.time))) +
                       "\n";
    const std::string line = result.snippet.empty()
                                 ? SearchSnippetKit::tagFallbackSnippet(query_, result.tags)
                                 : result.snippet;
    for (const auto& [run, isHighlighted] : SearchSnippetKit::highlightedByMarkers(line)) {
      const std::string shown = Terminal::printable(run);
      text += isHighlighted ? style.bold(style.warning(shown)) : shown;
    }
    return text + "\n\n";
  }

  [[nodiscard]] std::string shortQuery() const {
    constexpr std::size_t longest = 40;
    const std::string_view start = graphemePrefix(query_, longest);
    return Terminal::printable(start) + (start.size() < query_.size() ? "…" : "");
  }

  std::string query_;
  std::int64_t limit_ = 50;
};

}  // namespace

std::unique_ptr<Command> makeSearchCommand() {
  return std::make_unique<SearchCommand>();
}

}  // namespace nomely
