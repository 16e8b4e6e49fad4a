#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "AI/Transcription/SpeechTranscriber.h"
#include "Core/Service/MemoService.h"
#include "Feishu/BotEvent.h"
#include "Platform/Concurrency/Timers.h"
#include "Platform/Network/HttpClient.h"
#include "Platform/Network/WebSocketClient.h"

namespace nomely {

// What the bridge works with. What is referred to must outlive it.
struct FeishuContext {
  const MemoService& memos;
  HttpClient& http;
  WebSocketClient& webSockets;
  Timers& timers;
  std::string platformRoot;
  std::filesystem::path temporaryFolder;
  std::filesystem::path stateFolder;  // this machine's, for this root
  // By the settings as they are when a voice message has come. Any thread.
  std::function<std::unique_ptr<SpeechTranscriber>()> makeTranscriber;
  // Makes that sender the bot's only user, in the settings file; returns when it is on the disk.
  // Throws. Any thread.
  std::function<void(const std::string& openID)> saveAllowedOpenID;
  // Told of what the bot did. Any thread; must not block. May be empty.
  std::function<void(const BotEvent&)> onEvent;

  [[nodiscard]] const StoreContext& storage() const { return memos.context(); }
  void tell(const BotEvent& event) const {
    if (onEvent) onEvent(event);
  }
};

}  // namespace nomely
