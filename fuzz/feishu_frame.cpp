// A frame of any bytes is refused, or becomes one that is written and read again as it is.

#include "Feishu/Protocol/FeishuFrame.h"
#include "Platform/Text/Unicode.h"
#include "fuzz/Fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace nomely;
  const auto frame = FeishuFrame::decode(fuzz::textOf(data, size));
  if (!frame) return 0;
  const std::string written = frame->encode();
  fuzz::require(FeishuFrame::decode(written) == frame);
  fuzz::require(!FeishuFrame::decode(written + '\x08'));
  for (const FeishuHeader& header : frame->headers)
    fuzz::require(isValidUtf8(header.key) && isValidUtf8(header.value) &&
                  frame->headerValue(header.key));
  fuzz::require(isValidUtf8(frame->payloadEncoding + frame->payloadType + frame->logIDNew));
  return 0;
}
