#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <fmt/format.h>

#include "Core/Extensions/TagNames.h"
#include "Feishu/Conversation/BotFixture.h"
#include "Feishu/Messages/FeishuMessages.h"
#include "Support/Deadline.h"
#include "Support/FaultyFileSystem.h"

namespace nomely::test {

// Hears the same in every sound, or nothing.
class OneSentence final : public SpeechRecognizer {
 public:
  explicit OneSentence(std::string sentence) : sentence_(std::move(sentence)) {}
  [[nodiscard]] bool isAvailable() const override { return true; }
  [[nodiscard]] Recognition recognize(const std::filesystem::path&,
                                      const std::stop_token&) override {
    if (sentence_.empty())
      throw TranscriberError(TranscriberError::Kind::recognitionFailed, "听不清");
    return {sentence_, {{.text = sentence_, .start = 0, .duration = 1}}};
  }

 private:
  std::string sentence_;
};

// The bot's handling of messages over a diary, without a connection: events go in by call. One of
// these is one run of the program.
class MessagesRun {
 public:
  MessagesRun(const FeishuContext& context, FeishuAccount& account)
      : context_(context), account_(account) {
    context_.onEvent = [this](const BotEvent& event) {
      const std::lock_guard lock(mutex_);
      events_.push_back(event);
      changed_.notify_all();
    };
    messages_.start();
  }

  // Hands over an event, and returns whether it was acknowledged at once.
  bool deliver(const PhoneMessage& message) {
    const std::size_t before = acks(message.id());
    queue_.sync([&] {
      messages_.handleEventPayload(message.payload(), [this, id = message.id()] {
        const std::lock_guard lock(mutex_);
        ++acks_[id];
      });
    });
    return acks(message.id()) > before;
  }
  // Waits until so many events were told since the start, and what they came with is done.
  std::vector<BotEvent> awaitEvents(std::size_t count) {
    std::unique_lock lock(mutex_);
    if (!changed_.wait_for(lock, longestWait, [&] { return events_.size() >= count; }))
      throw std::runtime_error(fmt::format("{} of {} events", events_.size(), count));
    lock.unlock();
    queue_.sync([] {});
    lock.lock();
    return events_;
  }
  [[nodiscard]] std::size_t acks(const std::string& id) {
    const std::lock_guard lock(mutex_);
    return acks_[id];
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<BotEvent> events_;
  std::map<std::string, std::size_t> acks_;
  FeishuContext context_;
  FeishuAccount& account_;
  SerialQueue queue_{"test"};
  std::shared_ptr<FeishuLogStore> log_ = FeishuLogStore::of(context_.storage());
  FeishuReplies replies_{context_, account_, *log_};
  BotQueries queries_{context_, replies_};
  FeishuMessages messages_{context_, account_, queue_, replies_, queries_, *log_};
};

inline void eventually(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + longestWait;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) throw std::runtime_error("it never came");
    std::this_thread::yield();
  }
}

class MessagesTest : public BotTest {
 protected:
  MessagesTest() {
    bot.temporaryFolder = outside.path();
    bot.stateFolder = outside.path() / "state";
    bot.makeTranscriber = [this] {
      return std::make_unique<SpeechTranscriber>(std::make_shared<OneSentence>(spoken),
                                                 outside.path());
    };
    run.emplace(bot, account);
  }

  // As when the program is ended and started again.
  void restart() {
    run.reset();
    run.emplace(bot, account);
  }

  // "08:59 “你好” 跑步 jpg(照片.jpg)": the memos of all days, hidden tags left out.
  [[nodiscard]] std::string memosInDiary() const {
    std::string text;
    for (const Day date : store.listAllDates())
      for (const Memo& memo : store.listMemos(date)) {
        text += fmt::format("{} {} “{}”", date.string().substr(8), memo.time, memo.body);
        for (const std::string& tag : memo.tags)
          if (!TagNames::isHidden(tag) && tag != "飞书") text += " " + tag;
        for (const std::string& name : memo.attachments) text += " " + attached(memo, date, name);
        text += "\n";
      }
    return text;
  }
  // "< 你好\n> 👍 已记录": what was said in the chat.
  [[nodiscard]] std::string said() const {
    std::string text;
    for (const FeishuLogEntry& entry : log->load())
      text +=
          fmt::format("{} {}\n", entry.direction == FeishuLogEntry::Direction::incoming ? "<" : ">",
                      entry.text);
    return text;
  }
  [[nodiscard]] std::size_t waiting() const { return FeishuInbox::counts(context).waiting; }

  TemporaryFolder outside{quickParent()};
  std::string spoken = "你好世界";
  std::optional<MessagesRun> run;

 private:
  [[nodiscard]] std::string attached(const Memo& memo, Day date, const std::string& name) const {
    const auto file = context.paths.dayFolder(date) / name;
    const auto original = memo.originalNames.find(name);
    const auto transcript = memo.audioTranscripts.find(name);
    return (std::filesystem::exists(file) ? "" : "missing ") + file.extension().string() +
           (original == memo.originalNames.end() ? "" : fmt::format("({})", original->second)) +
           (transcript == memo.audioTranscripts.end() ? "" : "“" + transcript->second.text + "”");
  }
};

}  // namespace nomely::test
