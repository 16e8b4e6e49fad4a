#pragma once

#include <memory>

#include "Core/Query/SearchIndex.h"
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

  FeishuPlatform platform;
  MemoService memos{context};
  JobPool jobs{1};
  SearchIndex index{context, jobs};
  std::unique_ptr<HttpClient> http = makeHttpClient();
  std::unique_ptr<WebSocketClient> sockets = makeWebSocketClient();
  ManualTimers timers{clock};
  FeishuContext bot{.memos = memos,
                    .searchIndex = index,
                    .http = *http,
                    .webSockets = *sockets,
                    .timers = timers,
                    .platformRoot = platform.root(),
                    .temporaryFolder = folder.path(),
                    .stateFolder = folder.path() / "state",
                    .makeTranscriber = {},
                    .saveAllowedOpenID = {},
                    .onEvent = {}};
  FeishuAccount account{platform.config()};
  std::shared_ptr<FeishuLogStore> log = FeishuLogStore::of(context);
};

}  // namespace nomely::test
