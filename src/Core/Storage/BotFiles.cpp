#include "Core/Storage/BotFiles.h"

#include <chrono>
#include <cmath>
#include <string>

#include "Core/Extensions/DateFormatters.h"

namespace nomely {
namespace {

using Seconds = std::chrono::duration<double>;

constexpr Moment reference = std::chrono::sys_days(std::chrono::January / 1 / 2001);

// Null when there is none.
const std::string* textAt(const Json& json, const char* key) {
  if (!json.is_object()) return nullptr;
  const auto found = json.find(key);
  return found == json.end() ? nullptr : found->get_ptr<const std::string*>();
}

}  // namespace

std::optional<Moment> BotFiles::timeOf(const Json& message) {
  constexpr const char* key = "timestamp";
  if (const std::string* text = textAt(message, key))
    return DateFormatters::parseUtcTimestamp(*text);
  if (!message.is_object()) return std::nullopt;
  const auto found = message.find(key);
  if (found == message.end() || !found->is_number()) return std::nullopt;
  // Beyond it are no years of four digits.
  constexpr double most = 3e11;
  const auto seconds = found->get<double>();
  if (!(std::abs(seconds) < most)) return std::nullopt;
  return reference + std::chrono::round<Moment::duration>(Seconds(seconds));
}

double BotFiles::secondsOf(Moment moment) {
  return Seconds(moment - reference).count();
}

std::optional<std::string_view> BotFiles::messageIdOf(const Json& entry) {
  const std::string* id = textAt(entry, "messageId");
  return id == nullptr || id->empty() ? std::nullopt : std::optional<std::string_view>(*id);
}

}  // namespace nomely
