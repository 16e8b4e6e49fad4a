#include <fmt/format.h>

#include "CLI/Arguments.h"
#include "CLI/Command.h"
#include "CLI/MemoOutput.h"
#include "CLI/UsageError.h"
#include "Core/Extensions/DateFormatters.h"
#include "Core/Storage/VersionStore.h"

namespace nomely {
namespace {

Json jsonOf(const VersionEntry& version, std::size_t index, Day day) {
  return {{"index", index},
          {"timestamp", DateFormatters::timestamp(version.timestamp)},
          {"filename", version.filename},
          {"memo", MemoOutput::json({day, version.memo})}};
}

class HistoryCommand final : public Command {
 public:
  void declare(CLI::App& app) override {
    app.add_option("REF", reference_, "笔记：日期/编号，或 memo_ 标识")->required();
    app.add_option("ACTION", action_, "list（默认）、show、restore 或 clear");
    app.add_option("N", number_, "版本序号，1 为最新");
  }

  void run(Session& session) override {
    TimelineEntry entry = Arguments::memo(reference_, session);
    const VersionStore& store = session.memos().versions();
    const std::vector<VersionEntry> versions =
        store.listVersions(entry.date, entry.memo.seqNumber, entry.memo.memoId);
    if (action_ == "list") return list(session, versions, entry.date);
    if (action_ == "clear") return clear(session, store, versions.size(), entry);
    if (action_ != "show" && action_ != "restore")
      throw UsageError(
          fmt::format("“{}”不是历史的操作：请用 list、show、restore 或 clear", action_));
    const std::size_t index = indexIn(versions);
    const VersionEntry& version = versions[index - 1];
    if (action_ == "show") return show(session, version, index, entry.date);
    entry.memo = session.memos().restoreVersion(entry.date, entry.memo, version);
    MemoOutput::print(entry, session);
  }

 private:
  static void list(const Session& session, const std::vector<VersionEntry>& versions, Day day) {
    Json json = Json::array();
    std::string text;
    for (std::size_t i = 0; i < versions.size(); ++i) {
      json.push_back(jsonOf(versions[i], i + 1, day));
      text += heading(session.style(), versions[i], i + 1) +
              MemoOutput::text({day, versions[i].memo}, session.style()) + "\n";
    }
    if (session.isJson()) return session.printJson(json);
    const PagedOutput pager(session.environment(), session.isJson());
    session.print(text);
    if (versions.empty()) session.say("这条笔记没有历史版本。");
  }

  static void show(const Session& session, const VersionEntry& version, std::size_t index,
                   Day day) {
    if (session.isJson()) return session.printJson(jsonOf(version, index, day));
    session.print(heading(session.style(), version, index) +
                  MemoOutput::text({day, version.memo}, session.style()));
  }

  void clear(const Session& session, const VersionStore& store, std::size_t count,
             const TimelineEntry& entry) const {
    if (count > 0 && session.confirm("清空所有版本历史？"))
      store.deleteAllVersions(entry.date, entry.memo.seqNumber, entry.memo.memoId);
    list(session, store.listVersions(entry.date, entry.memo.seqNumber, entry.memo.memoId),
         entry.date);
  }

  static std::string heading(const Style& style, const VersionEntry& version, std::size_t index) {
    return style.bold(fmt::format("{}  {}", index,
                                  DateFormatters::isoDateTime.format(version.timestamp))) +
           "\n";
  }

  [[nodiscard]] std::size_t indexIn(const std::vector<VersionEntry>& versions) const {
    if (number_.empty()) throw UsageError("缺少版本序号，1 为最新，见 nomely history REF");
    const std::int64_t number = Arguments::integer(number_, "版本序号");
    if (number < 1 || number > std::ssize(versions))
      throw NameNotFoundError(
          fmt::format("没有第 {} 个历史版本，共 {} 个", number, versions.size()));
    return static_cast<std::size_t>(number);
  }

  std::string reference_;
  std::string action_ = "list";
  std::string number_;
};

}  // namespace

std::unique_ptr<Command> makeHistoryCommand() {
  return std::make_unique<HistoryCommand>();
}

}  // namespace nomely
