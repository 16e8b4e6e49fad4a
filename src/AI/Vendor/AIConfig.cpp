#include "AI/Vendor/AIConfig.h"

#include <array>

namespace nomely {
namespace {

struct Vendor {
  std::string_view name;  // in the file
  std::string_view displayName;
  std::string_view defaultModel;
  std::string_view defaultBaseURL;
};

// In the order of the cases, which is that of a menu.
constexpr std::array<Vendor, 7> vendors{{
    {"claude", "Claude", "claude-sonnet-4-20250514", "https://api.anthropic.com"},
    {"deepseek", "DeepSeek", "deepseek-chat", "https://api.deepseek.com"},
    {"qwen", "通义千问", "qwen-plus", "https://dashscope.aliyuncs.com/compatible-mode"},
    {"doubao", "豆包", "doubao-1.5-pro-32k", "https://ark.cn-beijing.volces.com/api/v3"},
    {"mi", "Mi", "MiMo-LM", "https://api.xiaomimimo.com"},
    {"openai", "OpenAI", "gpt-4o", "https://api.openai.com"},
    {"custom", "自定义", "", ""},
}};

const Vendor& vendorOf(AIConfig::Provider provider) {
  return vendors.at(static_cast<std::size_t>(provider));
}

constexpr std::array<std::string_view, vendors.size()> vendorNames = [] {
  std::array<std::string_view, vendors.size()> names;
  for (std::size_t i = 0; i < names.size(); ++i) names[i] = vendors[i].name;
  return names;
}();

}  // namespace

std::string_view AIConfig::displayName(Provider provider) {
  return vendorOf(provider).displayName;
}

std::string AIConfig::effectiveBaseURL() const {
  return baseURL && !baseURL->empty() ? *baseURL : std::string(vendorOf(provider).defaultBaseURL);
}

void AIConfig::choose(Provider chosen) {
  if (chosen == provider) return;
  provider = chosen;
  model = vendorOf(chosen).defaultModel;
  baseURL = vendorOf(chosen).defaultBaseURL;
}

ConfigFields configFields(AIConfig& config) {
  using enum ConfigField::Presence;
  constexpr double day = 86400;
  ConfigField::Choice provider = choiceOf(config.provider, vendorNames);
  provider.choose = [&config](std::size_t index) {
    config.choose(static_cast<AIConfig::Provider>(index));
  };
  return {{.key = "provider", .target = provider},
          {.key = "model", .target = &config.model},
          {.key = "apiKey", .target = &config.apiKey, .account = "Nomely.aiAPIKey"},
          {.key = "baseURL", .target = &config.baseURL, .presence = optional, .isURL = true},
          {.key = "features.writingAssistant", .target = &config.features.writingAssistant},
          {.key = "features.beautify", .target = &config.features.beautify},
          {.key = "timeout",
           .target = &config.timeout,
           .presence = optional,
           .least = 1,
           .most = day,
           .whyNot = config.provider == AIConfig::Provider::custom
                         ? std::string_view()
                         : "timeout 只在 provider 为 custom 时可以设置"}};
}

}  // namespace nomely
