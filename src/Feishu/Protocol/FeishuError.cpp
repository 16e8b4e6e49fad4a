#include "Feishu/Protocol/FeishuError.h"

#include <array>

#include <fmt/format.h>

namespace nomely {
namespace {

std::string_view codeOf(FeishuError::Kind kind) {
  constexpr std::array<std::string_view, 4> codes{"feishu.httpError", "feishu.apiError",
                                                  "feishu.tokenFailed", "feishu.invalidResponse"};
  return codes.at(static_cast<std::size_t>(kind));
}

}  // namespace

FeishuError::FeishuError(Kind kind, std::int64_t number, std::string message,
                         const std::string& text)
    : Error(codeOf(kind), text), kind_(kind), number_(number), message_(std::move(message)) {}

FeishuError FeishuError::httpError(int status) {
  return {Kind::httpError, status, {}, fmt::format("飞书 HTTP 错误 {}", status)};
}

FeishuError FeishuError::apiError(std::int64_t code, std::string message) {
  return {Kind::apiError, code, std::move(message), fmt::format("飞书 API 错误 code={}", code)};
}

FeishuError FeishuError::tokenFailed(std::int64_t code) {
  return {Kind::tokenFailed, code, {}, fmt::format("获取 token 失败 code={}", code)};
}

FeishuError FeishuError::invalidResponse() {
  return {Kind::invalidResponse, 0, {}, "飞书返回无效响应"};
}

}  // namespace nomely
