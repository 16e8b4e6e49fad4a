#pragma once

#include <cstdint>
#include <string>

#include "Platform/Error.h"

namespace nomely {

// The open platform refused, or gave no answer that can be used.
class FeishuError : public Error {
 public:
  enum class Kind { httpError, apiError, tokenFailed, invalidResponse };

  [[nodiscard]] static FeishuError httpError(int status);
  // The platform's message is kept out of the text.
  [[nodiscard]] static FeishuError apiError(std::int64_t code, std::string message);
  [[nodiscard]] static FeishuError tokenFailed(std::int64_t code);
  [[nodiscard]] static FeishuError invalidResponse();

  [[nodiscard]] Kind kind() const noexcept { return kind_; }
  // The status or code; 0 for an invalid response.
  [[nodiscard]] std::int64_t number() const noexcept { return number_; }
  [[nodiscard]] const std::string& message() const noexcept { return message_; }

 private:
  FeishuError(Kind kind, std::int64_t number, std::string message, const std::string& text);

  Kind kind_;
  std::int64_t number_;
  std::string message_;
};

}  // namespace nomely
