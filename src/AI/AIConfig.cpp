#include "AI/AIConfig.h"

#include <array>
#include <string_view>

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

}  // namespace

std::string AIConfig::effectiveBaseURL() const {
  return baseURL && !baseURL->empty() ? *baseURL : std::string(vendorOf(provider).defaultBaseURL);
}

void AIConfig::choose(Provider chosen) {
  if (chosen == provider) return;
  provider = chosen;
  model = vendorOf(chosen).defaultModel;
  baseURL = vendorOf(chosen).defaultBaseURL;
}

}  // namespace nomely
