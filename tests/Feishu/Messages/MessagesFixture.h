#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <fmt/format.h>

#include "Core/Extensions/TagNames.h"
#include "Feishu/Conversation/BotFixture.h"
#include "Feishu/Messages/FeishuMessages.h"
#include "Support/Deadline.h"
#include "Support/FaultyFileSystem.h"
#include "Support/MemoryFileSystem.h"

namespace nomely::test {

// One run of the bot's handling of messages. Events go in by call.
class MessagesRun {
 public:
  MessagesRun(const FeishuContext& context, FeishuAccount& account)
      : context_(context), account_(account) {
    context_.onEvent = [this](const BotEvent& event) {
      const std::lock_guard lock(mutex_);
      events_.push_back(event);
    };
    messages_.start();
  }

  // Returns whether the event was acknowledged at once.
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
  // Waits until so many were told since the start, and what they came with is done.
  std::vector<BotEvent> awaitEvents(std::size_t count) {
    eventually([&] { return events().size() >= count; });
    queue_.sync([] {});
    return events();
  }
  [[nodiscard]] std::size_t acks(const std::string& id) {
    const std::lock_guard lock(mutex_);
    return acks_[id];
  }

 private:
  [[nodiscard]] std::vector<BotEvent> events() {
    const std::lock_guard lock(mutex_);
    return events_;
  }

  std::mutex mutex_;
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

// Hears the same in every sound; nothing when that is empty.
struct OneSentence final : SpeechRecognizer {
  explicit OneSentence(std::string heard) : sentence(std::move(heard)) {}
  [[nodiscard]] bool isAvailable() const override { return !sentence.empty(); }
  [[nodiscard]] Recognition recognize(const std::filesystem::path&,
                                      const std::stop_token&) override {
    return {sentence, {{.text = sentence, .start = 0, .duration = 1}}};
  }
  std::string sentence;
};

// Runs over a disk that a test can fill up, or look at before each call.
class MessagesTest : public BotTest {
 protected:
  MessagesTest() {
    onThatDisk.makeTranscriber = [this] {
      return std::make_unique<SpeechTranscriber>(std::make_shared<OneSentence>(spoken),
                                                 outside.path());
    };
    onThatDisk.saveAllowedOpenID = [this](const std::string& openID) { saveAllowed(openID); };
    restart();
  }

  // As when the program is ended and started again.
  void restart() {
    run.reset();
    run.emplace(onThatDisk, account);
  }
  // The same, with an empty diary.
  void startAnew(const Tree& tree = {}) {
    run.reset();
    std::filesystem::remove_all(folder.path());
    std::filesystem::create_directory(folder.path());
    writeTree(folder.path(), tree);
    restart();
  }
  // "01 08:59 “你好” 跑步 .jpg(照片.jpg)": a line a memo, hidden tags left out.
  [[nodiscard]] std::string memosInDiary() const {
    std::string text;
    for (const Day date : store.listAllDates())
      for (const Memo& memo : store.listMemos(date)) {
        text += fmt::format("{} {} “{}”", date.string().substr(8), memo.time, memo.body);
        for (const std::string& tag : memo.tags)
          if (!TagNames::isHidden(tag) && tag != "飞书") text += " " + tag;
        for (const std::string& name : memo.attachments) {
          const auto file = context.paths.dayFolder(date) / name;
          text += (std::filesystem::exists(file) ? " " : " missing") + file.extension().string();
          if (memo.originalNames.contains(name)) text += "(" + memo.originalNames.at(name) + ")";
          if (memo.audioTranscripts.contains(name)) text += memo.audioTranscripts.at(name).text;
        }
        text += "\n";
      }
    return text;
  }
  // "< 你好\n> 👍 已记录\n": what was said in the chat.
  [[nodiscard]] std::string said() const {
    std::string text;
    for (const FeishuLogEntry& entry : log->load())
      text += (entry.direction == FeishuLogEntry::Direction::incoming ? "< " : "> ") + entry.text +
              "\n";
    return text;
  }
  [[nodiscard]] std::size_t waiting() const { return FeishuInbox::counts(context).waiting; }

  TemporaryFolder outside{quickParent()};
  std::string spoken = "你好世界";
  std::function<void(const std::string& openID)> saveAllowed;
  // Called before each call that changes the root, but for the log's: with the path below it.
  std::function<void(const std::string&)> beforeCall;
  std::mutex calling;
  FaultyFileSystem files{posixFileSystem(), {}, [this](const FaultyFileSystem::Call& call) {
                           const std::string path = call.path;
                           const std::string root = folder.path().string() + "/";
                           if (path.starts_with(root) && path.find("-log") == std::string::npos &&
                               call.name != "stat" && call.name != "read" && call.name != "list") {
                             const std::lock_guard lock(calling);
                             if (beforeCall) beforeCall(path.substr(root.size()));
                           }
                         }};
  MemoService memosOnThatDisk{{context.paths, FileManager(files), clock}};
  FeishuContext onThatDisk = contextOver(memosOnThatDisk, outside.path());
  std::optional<MessagesRun> run;
};

}  // namespace nomely::test
