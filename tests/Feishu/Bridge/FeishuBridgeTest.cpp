#include <gmock/gmock.h>

#include "Feishu/Bridge/FeishuBridge.h"
#include "Feishu/Conversation/BotFixture.h"
#include "Feishu/Messages/FeishuInbox.h"

namespace nomely::test {
namespace {

using Call = FeishuPlatform::Call;
using Manner = LoopbackServer::Manner;

using FeishuBridgeTest = BotTest;

TEST_F(FeishuBridgeTest, WhatWasUnderWayAtItsEndGoesOnWithTheNext) {
  const auto started = [&] {
    auto bridge = std::make_unique<FeishuBridge>(platform.config(), bot);
    bridge->start();
    return bridge;
  };
  platform.setMedia("key", "\xFF\xD8\xFF\xE0 picture");
  platform.fail(Call::resource, {.manner = Manner::hanging});
  platform.fail(Call::reply, {.manner = Manner::hanging});
  auto bridge = started();
  platform.send(phone::text("om_1", "/状态"));
  platform.awaitCalls(Call::reply, 1);
  platform.send(phone::image("om_2", "key"));
  platform.awaitCalls(Call::resource, 1);
  bridge.reset();  // at once, though nothing has answered
  EXPECT_EQ(platform.awaitConnection()->awaitCloseCode(), 1001);
  EXPECT_EQ(platform.acks("om_2"), 0U);
  EXPECT_EQ(FeishuInbox::counts(context).waiting, 1U);

  bridge = started();
  platform.awaitReaction("om_2", "THUMBSUP");
  platform.redeliver("om_2");
  platform.awaitAck("om_2");
  bridge.reset();
  const std::vector<Memo> written = store.listMemos(clock.today());
  ASSERT_EQ(written.size(), 1U);
  EXPECT_EQ(written[0].sourceId, "om_2");
  EXPECT_EQ(written[0].attachments.size(), 1U);
  EXPECT_EQ(FeishuInbox::counts(context).waiting, 0U);
}

}  // namespace
}  // namespace nomely::test
