#include "CLI/Arguments.h"
#include "CLI/Command.h"
#include "CLI/MemoOutput.h"
#include "CLI/PagedOutput.h"

namespace nomely {
namespace {

class ShowCommand final : public Command {
 public:
  void declare(Syntax& syntax) override {
    syntax.add(referenceArgument(&references_));
    syntax.add({.name = "--raw", .help = "原样输出笔记文件，读不出的也行", .target = &raw_});
    syntax.add({.name = "--path", .help = "笔记文件和附件的路径", .target = &path_});
    syntax.examples = {"nomely show @", "nomely show today/1 today/2", "nomely show @ --path"};
  }

  void run(Session& session) override {
    Arguments::atMostOne({{"--raw", raw_}, {"--path", path_}});
    Arguments::atMostOne({{"--raw", raw_}, {"--json", session.isJson()}});
    if (raw_) return printRaw(session);
    const std::vector<TimelineEntry> entries = Arguments::memos(references_, session);
    if (path_) return printPaths(entries, session);
    if (session.isJson()) return printJson(entries, session);
    const PagedOutput pager(session);
    for (const TimelineEntry& entry : entries)
      session.print((&entry == &entries.front() ? "" : "\n") +
                    MemoOutput::drawn(entry, session.style(), session.columns()));
  }

 private:
  void printRaw(Session& session) const {
    const DayStore& store = session.dayStore();
    for (const std::string& reference : references_) {
      const auto [day, seqNumber] = Arguments::place(reference, session);
      session.print(
          store.context().files.read(store.paths().memoFile(day, seqNumber)).value_or(""));
    }
  }

  static void printJson(const std::vector<TimelineEntry>& entries, const Session& session) {
    if (entries.size() == 1) return session.printJson(MemoOutput::json(entries.front()));
    MemoListPrinter printer(session);
    for (const TimelineEntry& entry : entries) printer.add(entry);
    printer.finish();
  }

  static void printPaths(const std::vector<TimelineEntry>& entries, Session& session) {
    const DiskPaths& paths = session.dayStore().paths();
    Json all = Json::array();
    std::string lines;
    for (const auto& [date, memo] : entries) {
      const std::string file = paths.memoFile(date, memo.seqNumber).string();
      Json attachments = Json::array();
      lines += file + "\n";
      for (const std::string& name : memo.attachments) {
        attachments.push_back((paths.dayFolder(date) / name).string());
        lines += attachments.back().get<std::string>() + "\n";
      }
      all.push_back({{"file", file}, {"attachments", std::move(attachments)}});
    }
    if (session.isJson()) return session.printJson(entries.size() == 1 ? all.front() : all);
    session.print(lines);
  }

  std::vector<std::string> references_;
  bool raw_ = false;
  bool path_ = false;
};

}  // namespace

std::unique_ptr<Command> makeShowCommand() {
  return std::make_unique<ShowCommand>();
}

}  // namespace nomely
