#pragma once

#include <string>

namespace nomely {

// How the chat bot's connection stands. A value.
struct ConnectionStatus {
  enum class Kind { error, disconnected, connecting, connected };

  // Texts of errors that stay until the connection is started anew.
  static constexpr const char* gaveUp = "连接失败，已停止重试。请重启 Nomely。";
  static constexpr const char* notConfigured = "未配置 App ID / Secret";

  Kind kind = Kind::disconnected;
  std::string text = {};  // of an error, in Chinese
  friend bool operator==(const ConnectionStatus&, const ConnectionStatus&) = default;
};

}  // namespace nomely
