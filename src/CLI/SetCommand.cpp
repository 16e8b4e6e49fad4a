#include <algorithm>

#include "CLI/Arguments.h"
#include "CLI/Command.h"
#include "CLI/MemoOutput.h"
#include "CLI/UsageError.h"
#include "Core/Extensions/TagUtilities.h"

namespace nomely {
namespace {

class SetCommand final : public Command {
 public:
  void declare(CLI::App& app) override {
    app.add_option("REF", reference_, "笔记：日期/编号，或 memo_ 标识")->required();
    app.add_option("--time", time_, "时间")->type_name("HH:MM");
    app.add_option("--mood", mood_, "心情，一个整数；none 为取消")->type_name("N|none");
    app.add_option("--tag", tags_, "加标签，可重复")->type_name("TAG")->allow_extra_args(false);
    app.add_option("--untag", untags_, "去标签，可重复")->type_name("TAG")->allow_extra_args(false);
    auto* pin = app.add_flag("--pin", pin_, "置顶");
    app.add_flag("--unpin", unpin_, "取消置顶（同时取消锁定）")->excludes(pin);
    auto* lock = app.add_flag("--lock", lock_, "锁定在最上（同时置顶）");
    app.add_flag("--unlock", unlock_, "取消锁定")->excludes(lock);
    app.add_option("--describe", describe_, "附件说明；说明为空则删除")
        ->type_name("FILE TEXT")
        ->type_size(2)
        ->expected(1);
  }

  void run(Session& session) override {
    if (unpin_ && lock_) throw UsageError("--unpin 与 --lock 不能同时使用");
    const bool asked = time_ || mood_ || !tags_.empty() || !untags_.empty() || pin_ || unpin_ ||
                       lock_ || unlock_ || !describe_.empty();
    if (!asked) throw UsageError("没有要改的内容。例如 nomely set today/1 --mood 4 --tag 生活");
    TimelineEntry entry = Arguments::memo(reference_, session);
    Memo changed = entry.memo;
    apply(changed);
    if (changed == entry.memo)
      session.say("没有变化，笔记未改动。");
    else
      entry.memo =
          session.memos().change(entry.date, entry.memo, [&](Memo& memo) { memo = changed; });
    MemoOutput::print(entry, session);
  }

 private:
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

  std::string reference_;
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
