#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Core/Storage/ConfigField.h"

namespace nomely {

// The user's choice of a language model's vendor, kept in ai-config.yaml; the key lies in the
// secret store. A value.
struct AIConfig {
  static constexpr std::string_view fileName = "ai-config.yaml";

  enum class Provider { claude, deepseek, qwen, doubao, mi, openai, custom };

  struct Features {
    bool writingAssistant = true;
    bool beautify = true;
    friend bool operator==(const Features&, const Features&) = default;
  };

  Provider provider = Provider::deepseek;
  std::string model = "deepseek-chat";
  std::string apiKey = {};  // empty in the file
  std::optional<std::string> baseURL = {};
  Features features = {};
  std::optional<std::int64_t> timeout = {};  // seconds of both time limits, for `custom` alone

  // baseURL, or the provider's own root when that is absent or empty; used as it stands.
  [[nodiscard]] std::string effectiveBaseURL() const;
  // What choosing a vendor does: model and baseURL become the vendor's own. Choosing the present
  // one changes nothing.
  void choose(Provider chosen);

  // What a user reads: "通义千问".
  [[nodiscard]] static std::string_view displayName(Provider provider);

  friend bool operator==(const AIConfig&, const AIConfig&) = default;
};

[[nodiscard]] ConfigFields configFields(AIConfig& config);

}  // namespace nomely
