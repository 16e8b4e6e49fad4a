#include "Platform/Settings/UserDefaults.h"

#include <algorithm>
#include <type_traits>

#include <nlohmann/json.hpp>

#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

using Json = nlohmann::json;

constexpr std::string_view fileName = "defaults.json";

template <typename Value>
bool holds(const Json& json) {
  if constexpr (std::is_same_v<Value, bool>) return json.is_boolean();
  if constexpr (std::is_same_v<Value, std::int64_t>)
    return json.is_number_integer() &&
           !(json.is_number_unsigned() && json.get<std::uint64_t>() > INT64_MAX);
  if constexpr (std::is_same_v<Value, std::string>) return json.is_string();
  if constexpr (std::is_same_v<Value, std::vector<std::string>>)
    return json.is_array() &&
           std::ranges::all_of(json, [](const Json& item) { return item.is_string(); });
}

}  // namespace

UserDefaults::UserDefaults(std::filesystem::path folder, const FileManager& files)
    : folder_(std::move(folder)), files_(files), lock_(folder_) {}

template <typename Value>
std::optional<Value> UserDefaults::value(std::string_view key) const {
  try {
    const std::optional<std::string> bytes = files_.read(folder_ / fileName);
    if (!bytes) return std::nullopt;
    const Json json = Json::parse(*bytes, nullptr, false);
    const auto found = json.find(std::string(key));
    if (found == json.end() || !holds<Value>(*found)) return std::nullopt;
    return found->template get<Value>();
  } catch (const FileError& error) {
    Log::error(LogChannel::app, "⚠️ UserDefaults.value: {}", error.what());
    return std::nullopt;
  }
}

template <typename Change>
void UserDefaults::change(Change apply) {
  const std::lock_guard guard(mutex_);
  files_.createDirectories(folder_);
  const bool locked = lock_.lock([] {});
  struct Unlock {
    DirectoryLock& lock;
    bool held;
    ~Unlock() {
      if (held) lock.unlock();
    }
  } const unlock{lock_, locked};
  const std::filesystem::path file = folder_ / fileName;
  const std::optional<std::string> bytes = files_.read(file);
  Json json = bytes ? Json::parse(*bytes, nullptr, false) : Json::object();
  const bool isWhole = json.is_object();
  if (!isWhole) {
    files_.writeAtomically(folder_ / "defaults.json.corrupt", *bytes);
    json = Json::object();
  }
  const Json before = json;
  apply(json);
  if (isWhole && json == before) return;
  files_.writeAtomically(file, json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
}

std::optional<bool> UserDefaults::boolean(std::string_view key) const {
  return value<bool>(key);
}
std::optional<std::int64_t> UserDefaults::integer(std::string_view key) const {
  return value<std::int64_t>(key);
}
std::optional<std::string> UserDefaults::string(std::string_view key) const {
  return value<std::string>(key);
}
std::optional<std::vector<std::string>> UserDefaults::strings(std::string_view key) const {
  return value<std::vector<std::string>>(key);
}

void UserDefaults::setBoolean(std::string_view key, bool value) {
  change([&](Json& json) { json[std::string(key)] = value; });
}
void UserDefaults::setInteger(std::string_view key, std::int64_t value) {
  change([&](Json& json) { json[std::string(key)] = value; });
}
void UserDefaults::setString(std::string_view key, const std::string& value) {
  change([&](Json& json) { json[std::string(key)] = value; });
}
void UserDefaults::setStrings(std::string_view key, const std::vector<std::string>& values) {
  change([&](Json& json) { json[std::string(key)] = values; });
}
void UserDefaults::remove(std::string_view key) {
  change([&](Json& json) { json.erase(std::string(key)); });
}

}  // namespace nomely
