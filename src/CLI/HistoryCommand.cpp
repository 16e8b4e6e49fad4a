#include <fmt/format.h>

#include "CLI/ActionCommand.h"
#include "CLI/Arguments.h"
#include "CLI/HistoryDiff.h"
#include "CLI/MemoOutput.h"
#include "CLI/PagedOutput.h"
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

class HistoryCommand final : public ActionCommand {
 public:
  void declare(Syntax& syntax) override {
    syntax.add({.name = "REF",
                .help = "笔记：日期/编号、@（最新）、@3，或 memo_ 标识；后者也可以是已坏或已不在的",
                .target = &reference_,
                .kind = WordKind::pastReference,
                .isRequired = true});
    addDefault(syntax, "list", "列出历史版本", with(&HistoryCommand::list));
    addNumber(add(syntax, "show", "显示一个版本", with(&HistoryCommand::show)), true);
    addNumber(add(syntax, "diff", "从一个版本到现在改了什么，默认最新的版本",
                  with(&HistoryCommand::diff)),
              false);
    addNumber(add(syntax, "restore", "恢复一个版本", with(&HistoryCommand::restore)), true);
    add(syntax, "original", "改写前的原文件，由其他程序写成", with(&HistoryCommand::original));
    add(syntax, "clear", "永久删除全部版本和原文件", with(&HistoryCommand::clear));
    syntax.add(
        {.name = "--oneline", .help = "每个版本一行：序号、时间、首行", .target = &oneLine_});
    syntax.examples = {"nomely history @", "nomely history today/1 diff",
                       "nomely history today/1 restore 2"};
  }

 private:
  struct Subject {
    Arguments::Past past;
    std::vector<VersionEntry> versions;  // newest first

    MemoPlace place;  // where the memo stands, or stood
  };

  Action with(void (HistoryCommand::*action)(Session&, Subject&) const) {
    return [this, action](Session& session) {
      Arguments::Past past = Arguments::past(reference_, session);
      const MemoPlace place = placeOf(past, session);
      Subject subject{std::move(past), {}, place};
      subject.versions = versionsOf(subject, session);
      (this->*action)(session, subject);
    };
  }

  void addNumber(Syntax& action, bool isRequired) {
    action.add(
        {.name = "N", .help = "版本序号，1 为最新", .target = &number_, .isRequired = isRequired});
  }

  static MemoPlace placeOf(const Arguments::Past& past, Session& session) {
    if (past.entry) return {past.entry->date, past.entry->memo.seqNumber};
    const auto last = session.memos().versions().lastPlaceOf(past.memoId);
    return last.value_or(MemoPlace{.day = session.clock().today()});
  }

  static std::vector<VersionEntry> versionsOf(const Subject& subject, Session& session) {
    return session.memos().versions().listVersions(subject.place.day, subject.place.seqNumber,
                                                   subject.past.memoId);
  }

  void list(Session& session, Subject& subject) const {
    const Day day = subject.place.day;
    Json json = Json::array();
    std::string text;
    std::size_t index = 0;
    for (const VersionEntry& version : subject.versions) {
      json.push_back(jsonOf(version, ++index, day));
      text += oneLine_
                  ? MemoOutput::oneLine(std::to_string(index), timeOf(version), version.memo.body)
                  : heading(session.style(), version, index) +
                        MemoOutput::text({day, version.memo}, session.style()) + "\n";
    }
    if (session.isJson()) return session.printJson(json);
    const PagedOutput pager(session);
    session.print(text);
    if (subject.versions.empty()) session.say("这条笔记没有历史版本。");
    if (!subject.past.entry)
      session.say(fmt::format("这条笔记读不出或已不在。恢复成一条笔记：nomely history {} restore N",
                              reference_));
    if (!session.memos().versions().originals(subject.past.memoId).empty())
      session.say(fmt::format("改写前的原文件也留着：nomely history {} original", reference_));
  }

  void show(Session& session, Subject& subject) const {
    const VersionEntry& version = chosen(subject.versions);
    const std::size_t index = number();
    const Day day = subject.place.day;
    if (session.isJson()) return session.printJson(jsonOf(version, index, day));
    session.print(heading(session.style(), version, index) +
                  MemoOutput::text({day, version.memo}, session.style()));
  }

  void restore(Session& session, Subject& subject) const {
    const VersionEntry& version = chosen(subject.versions);
    TimelineEntry entry{subject.place.day, version.memo};
    if (subject.past.entry) {
      entry.memo = session.memos().restoreVersion(entry.date, subject.past.entry->memo, version);
    } else {
      auto [day, memo] = session.memos().restoreVanished(version);
      entry = {day, std::move(memo)};
    }
    MemoOutput::printStored(entry, session);
  }

  void diff(Session& session, Subject& subject) const {
    if (!subject.past.entry)
      throw NameNotFoundError("这条笔记读不出或已不在，没有可比较的现状。见 history show");
    const VersionEntry& version = chosen(subject.versions);
    const HistoryDiff diff(version.memo, subject.past.entry->memo);
    if (session.isJson())
      return session.printJson({{"index", number()},
                                {"timestamp", DateFormatters::timestamp(version.timestamp)},
                                {"diff", diff.text(Style(false))}});
    const PagedOutput pager(session);
    session.print(diff.text(session.style()));
    if (diff.isEmpty()) session.say("没有不同。");
  }

  void original(Session& session, Subject& subject) const {
    const VersionStore& store = session.memos().versions();
    const std::vector<OriginalFile> originals = store.originals(subject.past.memoId);
    if (originals.empty()) throw NameNotFoundError("这条笔记没有改写前的原文件");
    const std::string content = store.contentOf(originals.front());
    if (!session.isJson()) return session.print(content);
    session.printJson({{"timestamp", DateFormatters::timestamp(originals.front().timestamp)},
                       {"filename", originals.front().filename},
                       {"content", content}});
  }

  void clear(Session& session, Subject& subject) const {
    if (!subject.versions.empty() && session.confirm("清空所有版本历史？"))
      session.memos().versions().deleteAllVersions(subject.place.day, 0, subject.past.memoId);
    subject.versions = versionsOf(subject, session);
    list(session, subject);
  }

  static std::string heading(const Style& style, const VersionEntry& version, std::size_t index) {
    return style.bold(fmt::format("{}  {}", index, timeOf(version))) + "\n";
  }

  static std::string timeOf(const VersionEntry& version) {
    return DateFormatters::isoDateTime.format(version.timestamp);
  }

  [[nodiscard]] std::size_t number() const { return static_cast<std::size_t>(number_.value_or(1)); }

  [[nodiscard]] const VersionEntry& chosen(const std::vector<VersionEntry>& versions) const {
    if (number() > versions.size())
      throw NameNotFoundError(
          fmt::format("没有第 {} 个历史版本，共 {} 个", number(), versions.size()));
    return versions[number() - 1];
  }

  std::string reference_;
  std::optional<std::int64_t> number_;
  bool oneLine_ = false;
};

}  // namespace

std::unique_ptr<Command> makeHistoryCommand() {
  return std::make_unique<HistoryCommand>();
}

}  // namespace nomely
