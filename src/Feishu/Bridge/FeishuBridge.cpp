#include "Feishu/Bridge/FeishuBridge.h"

#include <utility>

#include "Feishu/Connection/FeishuConnection.h"
#include "Feishu/Conversation/BotQueries.h"
#include "Feishu/Conversation/FeishuLogStore.h"
#include "Feishu/Conversation/FeishuReplies.h"
#include "Feishu/FeishuAccount.h"
#include "Feishu/Messages/FeishuMessages.h"
#include "Platform/Concurrency/SerialQueue.h"

namespace nomely {

// Each uses what stands above it, and ends before that does.
class FeishuBridge::Parts {
 public:
  Parts(FeishuConfig config, FeishuContext given)
      : context(std::move(given)), account(std::move(config)) {}

  const FeishuContext context;
  FeishuAccount account;
  SerialQueue queue{"com.nomely.feishu"};
  const std::shared_ptr<FeishuLogStore> log = FeishuLogStore::of(context.storage());
  FeishuReplies replies{context, account, *log};
  BotQueries queries{context, replies};
  FeishuMessages messages{context, account, queue, replies, queries, *log};
  FeishuConnection connection{account,
                              {.platform = {context.http, context.platformRoot},
                               .webSockets = context.webSockets,
                               .timers = context.timers},
                              queue,
                              messages};
};

FeishuBridge::FeishuBridge(FeishuConfig config, FeishuContext context)
    : parts_(std::make_unique<Parts>(std::move(config), std::move(context))) {}

FeishuBridge::~FeishuBridge() = default;

void FeishuBridge::setStatusObserver(std::function<void(const ConnectionStatus&)> observer) {
  parts_->connection.setStatusObserver(std::move(observer));
}

void FeishuBridge::start() {
  const FeishuConfig config = parts_->account.config();
  parts_->connection.start();
  if (config.enabled && config.isConfigured()) parts_->messages.start();
}

void FeishuBridge::stop() {
  parts_->connection.stop();
}

void FeishuBridge::updateConfig(const FeishuConfig& config) {
  parts_->connection.updateConfig(config);
  if (config.enabled && config.isConfigured()) parts_->messages.start();
}

ConnectionStatus FeishuBridge::currentStatus() const {
  return parts_->connection.currentStatus();
}

FeishuConfig FeishuBridge::currentConfig() const {
  return parts_->account.config();
}

}  // namespace nomely
