#include "Feishu/Conversation/FeishuLogEntry.h"

#include "Core/Storage/BotFiles.h"
#include "Platform/Text/JsonReading.h"

namespace nomely {
namespace {

constexpr const char* incoming = "incoming";
constexpr const char* outgoing = "outgoing";

std::optional<std::string> textAt(const Json& json, const char* key) {
  const auto found = json.find(key);
  if (found == json.end() || !found->is_string()) return std::nullopt;
  return found->get<std::string>();
}

}  // namespace

std::string FeishuLogEntry::line() const {
  const Json json{{"id", id},
                  {"direction", direction == Direction::incoming ? incoming : outgoing},
                  {"timestamp", BotFiles::secondsOf(timestamp)},
                  {"text", text}};
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::optional<FeishuLogEntry> FeishuLogEntry::fromLine(std::string_view line) {
  Json json;
  try {
    json = readJson(line);
  } catch (const JsonError&) {
    return std::nullopt;
  }
  if (!json.is_object()) return std::nullopt;
  const auto id = textAt(json, "id");
  const auto direction = textAt(json, "direction");
  const auto timestamp = BotFiles::timeOf(json);
  const auto text = textAt(json, "text");
  if (!id || !timestamp || !text || (direction != incoming && direction != outgoing))
    return std::nullopt;
  return FeishuLogEntry{
      .id = *id,
      .direction = direction == incoming ? Direction::incoming : Direction::outgoing,
      .timestamp = *timestamp,
      .text = *text};
}

}  // namespace nomely
