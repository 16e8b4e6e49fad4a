#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Feishu/Protocol/FeishuHeader.h"

namespace nomely {

// A message of the long connection: Protocol Buffers' encoding of the nine fields below, numbered
// from 1 in their order. A value.
struct FeishuFrame {
  std::uint64_t seqID = 0;
  std::uint64_t logID = 0;
  std::int32_t service = 0;  // the service id of the endpoint
  std::int32_t method = 0;   // 0 control, 1 data
  std::vector<FeishuHeader> headers = {};
  std::string payloadEncoding = {};
  std::string payloadType = {};
  std::string payload = {};  // bytes
  std::string logIDNew = {};

  // Absent when the bytes are no such message. Strings that are not UTF-8 come out empty; a header
  // that can't be read is left out.
  [[nodiscard]] static std::optional<FeishuFrame> decode(std::string_view protoData);
  [[nodiscard]] std::string encode() const;
  // Of the first header with exactly that key.
  [[nodiscard]] std::optional<std::string> headerValue(std::string_view key) const;

  friend bool operator==(const FeishuFrame&, const FeishuFrame&) = default;
};

}  // namespace nomely
