#pragma once

#include <string>

#include "Platform/Error.h"

namespace nomely {

// A model's vendor that gave no usable answer. `what()` never holds the key.
class AIError : public Error {
 public:
  enum class Kind { networkError, apiError, decodingError, notConfigured, timeout };

  // `detail` ends the texts of the first three.
  explicit AIError(Kind kind, const std::string& detail = {});
  [[nodiscard]] Kind kind() const noexcept { return kind_; }

 private:
  Kind kind_;
};

// The settings have switched off what was asked for; nothing was sent.
class AIFeatureOffError : public Error {
 public:
  // `key` is that of the switch: "ai.features.beautify".
  explicit AIFeatureOffError(const std::string& key);
};

}  // namespace nomely
