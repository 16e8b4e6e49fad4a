#include "CLI/Arguments.h"
#include "CLI/Command.h"
#include "CLI/MemoOutput.h"

namespace nomely {
namespace {

class AttachCommand final : public Command {
 public:
  void declare(Syntax& syntax) override {
    syntax.add(referenceArgument(&reference_));
    syntax.add({.name = "FILE",
                .help = "要附加的文件",
                .target = &files_,
                .kind = WordKind::file,
                .isRequired = true});
    syntax.examples = {"nomely attach @ ~/照片.jpg"};
  }

  void run(Session& session) override {
    const std::vector<std::filesystem::path> files = Arguments::files(files_);
    TimelineEntry entry = Arguments::memo(reference_, session);
    entry.memo = session.memos().attach(entry.date, entry.memo, files);
    MemoOutput::printStored(entry, session);
  }

 private:
  std::string reference_;
  std::vector<std::string> files_;
};

class DetachCommand final : public Command {
 public:
  void declare(Syntax& syntax) override {
    syntax.add(referenceArgument(&reference_));
    syntax.add({.name = "NAME",
                .help = "附件的存储名或原名",
                .target = &names_,
                .kind = WordKind::attachment,
                .isRequired = true});
    syntax.examples = {"nomely detach @ 照片.jpg"};
  }

  void run(Session& session) override {
    TimelineEntry entry = Arguments::memo(reference_, session);
    std::vector<std::string> stored;
    stored.reserve(names_.size());
    for (const std::string& name : names_)
      stored.push_back(Arguments::attachment(entry.memo, name));
    entry.memo = session.memos().detach(entry.date, entry.memo, stored);
    MemoOutput::printStored(entry, session);
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
