#include <algorithm>

#include <fmt/format.h>

#include "CLI/Arguments.h"
#include "CLI/Command.h"
#include "CLI/MemoOutput.h"
#include "CLI/UsageError.h"
#include "Core/Extensions/TagUtilities.h"

namespace nomely {
namespace {

class SetCommand final : public Command {
 public:
  void declare(Syntax& syntax) override {
    syntax.add(referenceArgument(&references_));
    const auto tag = [&](const char* name, const char* help, std::vector<std::string>& target) {
      syntax.add(
          {.name = name, .help = help, .target = &target, .value = "TAG", .kind = WordKind::tag});
    };
    syntax.add({.name = "--time", .help = "时间", .target = &time_, .value = "HH:MM"});
    syntax.add({.name = "--mood",
                .help = "心情，一个整数，常用 1（低落）到 5（很好）；none 为取消",
                .target = &mood_,
                .value = "N|none"});
    tag("--tag", "加标签，可重复", tags_);
    tag("--untag", "去标签，可重复", untags_);
    syntax.add({.name = "--pin", .help = "置顶", .target = &pin_});
    syntax.add({.name = "--unpin", .help = "取消置顶（同时取消锁定）", .target = &unpin_});
    syntax.add({.name = "--lock", .help = "锁定在最上（同时置顶）", .target = &lock_});
    syntax.add({.name = "--unlock", .help = "取消锁定", .target = &unlock_});
    syntax.add({.name = "--describe",
                .help = "附件说明；说明为空则删除",
                .target = &describe_,
                .value = "FILE TEXT",
                .kind = WordKind::attachment,
                .words = 2});
    syntax.examples = {"nomely set @ --mood 4 --tag 生活", "nomely set today/1 today/2 --pin"};
  }

  void run(Session& session) override {
    Arguments::atMostOne({{"--pin", pin_}, {"--unpin", unpin_}});
    Arguments::atMostOne({{"--lock", lock_}, {"--unlock", unlock_}});
    Arguments::atMostOne({{"--unpin", unpin_}, {"--lock", lock_}});
    const bool asked = time_ || mood_ || !tags_.empty() || !untags_.empty() || pin_ || unpin_ ||
                       lock_ || unlock_ || !describe_.empty();
    if (!asked) throw UsageError("没有要改的内容。例如 nomely set today/1 --mood 4 --tag 生活");
    std::vector<TimelineEntry> entries = Arguments::memos(references_, session);
    std::vector<Memo> changed;
    changed.reserve(entries.size());
    for (const TimelineEntry& entry : entries) apply(changed.emplace_back(entry.memo));
    for (std::size_t i = 0; i < entries.size(); ++i) store(changed[i], entries[i], session);
    MemoOutput::printStored(entries, session);
  }

 private:
  static void store(const Memo& changed, TimelineEntry& entry, Session& session) {
    if (changed == entry.memo)
      return session.say(
          fmt::format("{}/{} 没有变化，笔记未改动。", entry.date.string(), entry.memo.seqNumber));
    entry.memo =
        session.memos().change(entry.date, entry.memo, [&](Memo& memo) { memo = changed; });
  }

  void apply(Memo& memo) const {
    if (time_) memo.time = Arguments::time(*time_);
    if (mood_) memo.mood = moodOf(*mood_);
    if (!tags_.empty() || !untags_.empty()) applyTags(memo);
    if (pin_ || unpin_) memo.setPinned(pin_);
    if (lock_ || unlock_) memo.setLockedOnTop(lock_);
    if (!describe_.empty()) {
      const std::string name = Arguments::attachment(memo, describe_[0]);
      if (describe_[1].empty())
        memo.attachmentDescriptions.erase(name);
      else
        memo.attachmentDescriptions[name] = describe_[1];
    }
  }

  static std::optional<std::int64_t> moodOf(const std::string& text) {
    if (text == "none") return std::nullopt;
    return Arguments::integer(text, "--mood");
  }

  void applyTags(Memo& memo) const {
    for (const std::string& tag : Arguments::tags(untags_)) std::erase(memo.tags, tag);
    for (std::string& tag : Arguments::tags(tags_)) memo.tags.push_back(std::move(tag));
    memo.tags = TagUtilities::uniqueTags(memo.tags);
  }

  std::vector<std::string> references_;
  std::optional<std::string> time_;
  std::optional<std::string> mood_;
  std::vector<std::string> tags_;
  std::vector<std::string> untags_;
  std::vector<std::string> describe_;
  bool pin_ = false;
  bool unpin_ = false;
  bool lock_ = false;
  bool unlock_ = false;
};

}  // namespace

std::unique_ptr<Command> makeSetCommand() {
  return std::make_unique<SetCommand>();
}

}  // namespace nomely
