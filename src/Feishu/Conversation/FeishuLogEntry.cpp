#include "Feishu/Conversation/FeishuLogEntry.h"

#include <chrono>
#include <cmath>

#include "Core/Extensions/DateFormatters.h"
#include "Platform/Text/JsonReading.h"

namespace nomely {
namespace {

constexpr const char* incoming = "incoming";
constexpr const char* outgoing = "outgoing";

using Seconds = std::chrono::duration<double>;

constexpr Moment reference = std::chrono::sys_days(std::chrono::January / 1 / 2001);

std::optional<std::string> textAt(const Json& json, const char* key) {
  const auto found = json.find(key);
  if (found == json.end() || !found->is_string()) return std::nullopt;
  return found->get<std::string>();
}

std::optional<Moment> momentAt(const Json& json, const char* key) {
  if (const auto text = textAt(json, key)) return DateFormatters::parseUtcTimestamp(*text);
  const auto found = json.find(key);
  if (found == json.end() || !found->is_number()) return std::nullopt;
  // Beyond it are no years of four digits.
  constexpr double most = 3e11;
  const auto seconds = found->get<double>();
  if (!(std::abs(seconds) < most)) return std::nullopt;
  return reference + std::chrono::round<Moment::duration>(Seconds(seconds));
}

}  // namespace

std::string FeishuLogEntry::line() const {
  const Json json{{"id", id},
                  {"direction", direction == Direction::incoming ? incoming : outgoing},
                  {"timestamp", Seconds(timestamp - reference).count()},
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
  const auto timestamp = momentAt(json, "timestamp");
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
