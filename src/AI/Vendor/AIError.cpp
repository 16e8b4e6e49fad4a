#include "AI/Vendor/AIError.h"

#include <array>

#include <fmt/format.h>

namespace nomely {
namespace {

struct Case {
  std::string_view code;
  std::string_view text;
};

const Case& caseOf(AIError::Kind kind) {
  static constexpr std::array<Case, 5> cases{
      {{"ai.networkError", "网络错误: "},
       {"ai.apiError", "API 错误: "},
       {"ai.decodingError", "解码错误: "},
       {"ai.notConfigured", "AI 未配置，请在设置中填写 API Key"},
       {"ai.timeout", "请求超时，请检查网络后重试"}}};
  return cases.at(static_cast<std::size_t>(kind));
}

}  // namespace

AIError::AIError(Kind kind, const std::string& detail)
    : Error(caseOf(kind).code, std::string(caseOf(kind).text) + detail), kind_(kind) {}

AIFeatureOffError::AIFeatureOffError(const std::string& key)
    : Error("ai.featureOff",
            fmt::format("这项 AI 功能已在设置中关闭，要用它请把 {} 设为 true", key)) {}

}  // namespace nomely
