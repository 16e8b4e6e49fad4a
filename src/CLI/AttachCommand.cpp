#include "CLI/Arguments.h"
#include "CLI/Checks.h"
#include "CLI/Command.h"
#include "CLI/MemoOutput.h"

namespace nomely {
namespace {

class AttachCommand final : public Command {
 public:
  void declare(CLI::App& app) override {
    app.add_option("REF", reference_, "笔记：日期/编号，或 memo_ 标识")->required();
    app.add_option("FILE", files_, "要附加的文件，可多个")
        ->required()
        ->check(Checks::existingFile());
  }

  void run(Session& session) override {
    TimelineEntry entry = Arguments::memo(reference_, session);
    entry.memo = session.memos().attach(entry.date, entry.memo, {files_.begin(), files_.end()});
    MemoOutput::print(entry, session);
  }

 private:
  std::string reference_;
  std::vector<std::string> files_;
};

class DetachCommand final : public Command {
 public:
  void declare(CLI::App& app) override {
    app.add_option("REF", reference_, "笔记：日期/编号，或 memo_ 标识")->required();
    app.add_option("NAME", names_, "附件的存储名或原名，可多个")->required();
  }

  void run(Session& session) override {
    TimelineEntry entry = Arguments::memo(reference_, session);
    std::vector<std::string> stored;
    stored.reserve(names_.size());
    for (const std::string& name : names_)
      stored.push_back(Arguments::attachment(entry.memo, name));
    entry.memo = session.memos().detach(entry.date, entry.memo, stored);
    MemoOutput::print(entry, session);
  }

 private:
  std::string reference_;
  std::vector<std::string> names_;
};

}  // namespace

std::unique_ptr<Command> makeAttachCommand() {
  return std::make_unique<AttachCommand>();
}
std::unique_ptr<Command> makeDetachCommand() {
  return std::make_unique<DetachCommand>();
}

}  // namespace nomely
