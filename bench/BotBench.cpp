#include <atomic>
#include <fstream>
#include <memory>
#include <stdexcept>

#include <fmt/format.h>

#include "Core/Extensions/DateFormatters.h"
#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Query/SearchIndex.h"
#include "Feishu/Messages/FeishuMessages.h"
#include "Feishu/Protocol/FeishuFrame.h"
#include "Platform/Text/Json.h"
#include "bench/BareWrite.h"
#include "bench/Comparison.h"
#include "bench/Workspace.h"

namespace nomely::bench {
namespace {

// A platform that takes everything at once.
class WillingPlatform final : public HttpClient {
 public:
  HttpResponse send(const HttpRequest& request, const std::stop_token&) override {
    const bool isToken = request.url.ends_with("/internal");
    if (!isToken) ++reactions;
    return {.status = 200,
            .body = isToken ? R"({"code":0,"tenant_access_token":"t","expire":7200})" : "{}"};
  }
  std::atomic<std::size_t> reactions = 0;
};

class NoSockets final : public WebSocketClient {
 public:
  std::shared_ptr<WebSocket> connect(const std::string&, const std::stop_token&) override {
    throw std::logic_error("nobody connects");
  }
};

constexpr std::size_t fewMemos = 10;
constexpr std::size_t manyMemos = 10000;
constexpr std::size_t turns = 200;

std::string textAt(std::size_t turn) {
  return fmt::format("{}：地铁上想到的一件事，回家记得给阳台的花浇水 #生活", turn);
}

// A memo's file as the bot writes it.
std::string fileAt(std::size_t number) {
  Memo memo;
  memo.schemaVersion = MemoFrontmatter::currentSchemaVersion;
  memo.memoId = Memo::makeMemoId();
  memo.createdAt = memo.updatedAt = DateFormatters::timestamp(SystemClock().now());
  memo.source = FeishuDayMarks::source;
  memo.sourceId = fmt::format("om_before_{}", number);
  memo.time = "00:00";
  memo.tags = FeishuMemoWriter::resolveTags("", *memo.sourceId, {"生活"});
  return MemoFrontmatterParser::serialize(memo, fmt::format("以前的 {}", textAt(number)));
}

void fill(const std::filesystem::path& folder, std::size_t memosOfDay) {
  std::filesystem::create_directories(folder);
  for (std::size_t number = 1; number <= memosOfDay; ++number)
    std::ofstream(folder / DiskPaths::memoFileName(static_cast<std::int64_t>(number)))
        << fileAt(number);
}

// A bot over a day of that many memos, all of which came by it.
class Bot {
 public:
  Bot(const std::filesystem::path& root, std::size_t memosOfDay) : storage_(contextFor(root)) {
    fill(storage_.paths.dayFolder(storage_.clock.today()), memosOfDay);
    index_.forEachEntry([](const MemoEntry&) { return false; });
    if (!receive(0)) throw std::runtime_error("not acknowledged");
    settle();
  }

  // From the frame to the ack.
  bool receive(std::size_t turn) {
    const std::string frame = frameAt(turn);
    bool isAcknowledged = false;
    queue_.sync([&] {
      messages_.handleEventPayload(FeishuFrame::decode(frame).value().payload,
                                   [&] { isAcknowledged = true; });
    });
    ++received_;
    return isAcknowledged;
  }
  // Waits for what goes on after the ack.
  void settle() {
    (void)log_->load();
    while (platform_.reactions < received_) std::this_thread::yield();
  }

 private:
  [[nodiscard]] static std::string frameAt(std::size_t turn) {
    const Json content{{"text", textAt(turn)}};
    const Json event{{"event",
                      {{"sender", {{"sender_id", {{"open_id", "ou_1"}}}}},
                       {"message",
                        {{"message_id", fmt::format("om_{}", turn)},
                         {"chat_type", "p2p"},
                         {"message_type", "text"},
                         {"content", content.dump()}}}}}};
    return FeishuFrame{.seqID = turn, .method = 1, .payload = event.dump()}.encode();
  }

  StoreContext storage_;
  MemoService memos_{storage_};
  JobPool jobs_;
  SearchIndex index_{storage_, jobs_};
  WillingPlatform platform_;
  NoSockets sockets_;
  std::unique_ptr<Timers> timers_ = makeSystemTimers();
  FeishuContext context_{.memos = memos_,
                         .http = platform_,
                         .webSockets = sockets_,
                         .timers = *timers_,
                         .platformRoot = "https://localhost",
                         .temporaryFolder = storage_.paths.rootURL / ".temporary",
                         .stateFolder = storage_.paths.rootURL / ".state",
                         .makeTranscriber = {},
                         .saveAllowedOpenID = {},
                         .onEvent = {}};
  FeishuAccount account_{{.appId = "cli_1", .appSecret = "s", .enabled = true}};
  SerialQueue queue_{"bench"};
  std::shared_ptr<FeishuLogStore> log_ = FeishuLogStore::of(storage_);
  FeishuReplies replies_{context_, account_, *log_};
  BotQueries queries_{context_, replies_};
  FeishuMessages messages_{context_, account_, queue_, replies_, queries_, *log_};
  std::size_t received_ = 0;
};

Steps::Step receiving(const std::shared_ptr<Bot>& bot) {
  return [bot](std::size_t turn) {
    if (!bot->receive(turn + 1)) throw std::runtime_error("not acknowledged");
  };
}

// The bare write of such a memo into a folder of as many.
Steps againstBareWrite(std::size_t memosOfDay) {
  const std::filesystem::path folder = workspace() / fmt::format("bot-{}", memosOfDay);
  const auto bot = std::make_shared<Bot>(folder / "root", memosOfDay);
  const std::filesystem::path bare = folder / "bare";
  fill(bare, memosOfDay);
  std::vector<std::string> contents;
  for (std::size_t turn = 0; turn < turns; ++turn) contents.push_back(fileAt(turn));
  return {.floor =
              [bare, memosOfDay, contents](std::size_t turn) {
                const auto number = static_cast<std::int64_t>(memosOfDay + 1 + turn);
                if (!bareWrite(bare, DiskPaths::memoFileName(number), contents[turn]))
                  throw std::runtime_error("bare write failed");
              },
          .ours = receiving(bot),
          .tidy = [bot] { bot->settle(); }};
}

Steps againstASmallDay() {
  const auto small = std::make_shared<Bot>(workspace() / "bot-small", fewMemos);
  const auto large = std::make_shared<Bot>(workspace() / "bot-large", manyMemos);
  return {.floor = receiving(small), .ours = receiving(large), .tidy = [small, large] {
            small->settle();
            large->settle();
          }};
}

}  // namespace

void registerBot() {
  registerComparison({"text to the bot, frame to ack: message 10",
                      [] { return againstBareWrite(fewMemos); },
                      {.ratio = 1.3},
                      turns});
  registerComparison({"text to the bot, frame to ack: message 10,000",
                      [] { return againstBareWrite(manyMemos); },
                      {.ratio = 1.3},
                      turns});
  registerComparison(
      {"message 10,000 of a day beside message 10", againstASmallDay, {.ratio = 1.5}, turns});
}

}  // namespace nomely::bench
