#pragma once

#include <string>
#include <string_view>

#include "Core/Storage/ConfigField.h"

namespace nomely {

// The chat bot's credentials, kept in feishu-config.yaml; the application's secret lies in the
// secret store. A value.
struct FeishuConfig {
  static constexpr std::string_view fileName = "feishu-config.yaml";

  std::string appId = {};      // "cli_" and what follows
  std::string appSecret = {};  // empty in the file
  bool enabled = false;
  std::string allowedOpenID = {};  // the only user; empty lets anybody in

  [[nodiscard]] bool isConfigured() const { return !appId.empty() && !appSecret.empty(); }

  friend bool operator==(const FeishuConfig&, const FeishuConfig&) = default;
};

[[nodiscard]] ConfigFields configFields(FeishuConfig& config);

}  // namespace nomely
