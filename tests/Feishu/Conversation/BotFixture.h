#pragma once

#include <memory>

#include "Core/Service/MemoService.h"
#include "Feishu/Conversation/FeishuReplies.h"
#include "Feishu/Platform/FeishuPlatform.h"
#include "Support/ManualTimers.h"
#include "Support/StoreFixture.h"

namespace nomely::test {

// A diary and a platform that a bot can talk with.
class BotTest : public StoreTest {
 protected:
  [[nodiscard]] std::vector<std::string> logged() const {
    std::vector<std::string> texts;
    for (const FeishuLogEntry& entry : log->load()) texts.push_back(entry.text);
    return texts;
  }

  // What a bot over `diary` has, with files of its own in `own`.
  [[nodiscard]] FeishuContext contextOver(MemoService& diary, const std::filesystem::path& own) {
    return {.memos = diary,
            .http = *http,
            .webSockets = *sockets,
            .timers = timers,
            .platformRoot = platform.root(),
            .temporaryFolder = own,
            .stateFolder = own / "state",
            .makeTranscriber = {},
            .saveAllowedOpenID = {},
            .onEvent = {}};
  }

  FeishuPlatform platform;
  MemoService memos{context};
  JobPool jobs{1};
  std::unique_ptr<HttpClient> http = makeHttpClient();
  std::unique_ptr<WebSocketClient> sockets = makeWebSocketClient();
  ManualTimers timers{clock};
  FeishuContext bot = contextOver(memos, folder.path());
  FeishuAccount account{platform.config()};
  std::shared_ptr<FeishuLogStore> log = FeishuLogStore::of(context);
};

}  // namespace nomely::test
