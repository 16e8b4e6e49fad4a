// An event of any bytes is refused with a typed error or gives a message whose names are safe.

#include <iterator>

#include "Feishu/Messages/FeishuEventPayload.h"
#include "Feishu/Messages/FeishuMemoWriter.h"
#include "Platform/Text/JsonReading.h"
#include "Platform/Text/Unicode.h"
#include "fuzz/Fuzzing.h"

namespace {

using namespace nomely;

bool isSafeOrEmpty(const std::string& name) {
  return name.empty() || FeishuAPI::isSafeName(name);
}

// The event whole, or the content of one of a kind that the first byte chooses: most of what there
// is to be read lies in there, quoted.
FeishuEventPayload eventOf(std::string_view text) {
  static constexpr const char* kinds[] = {"text", "image", "audio", "post", "file", "media"};
  const auto kind = text.empty() ? 6U : static_cast<unsigned char>(text.front()) - unsigned{'0'};
  if (kind >= std::size(kinds)) return FeishuEventPayload::decode(text);
  return {.messageId = "om_1", .messageType = kinds[kind], .content = std::string(text.substr(1))};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = fuzz::textOf(data, size);
  FeishuEventPayload event;
  try {
    event = eventOf(text);
  } catch (const JsonError&) {
    return 0;
  }
  fuzz::require(isSafeOrEmpty(event.messageId));
  if (const auto moment = event.eventCreateTime(SystemClock()))
    fuzz::require(Day::of(*moment).string() >= "2000-01-01");
  const auto message = event.message();
  if (!message) return 0;
  fuzz::require(!message->text.empty() || !message->resources.empty());
  fuzz::require(isValidUtf8(message->text) && isSafeOrEmpty(message->messageId));
  for (const auto& [key, type] : message->resources) fuzz::require(FeishuAPI::isSafeName(key));
  if (message->kind == FeishuMessage::Kind::file)
    fuzz::require(message->text.find_first_of("/\n\r\t") == std::string::npos);
  int hidden = 0;
  for (const std::string& tag : FeishuMemoWriter::resolveTags(message->text, "om_1"))
    hidden += tag.starts_with('_') ? 1 : 0;
  fuzz::require(hidden == 2);
  return 0;
}
