#include "App/BotStatus.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

#include <fmt/format.h>

#include "Core/Extensions/DateFormatters.h"
#include "Platform/Text/JsonReading.h"

namespace nomely {
namespace {

using Kind = ConnectionStatus::Kind;

struct Name {
  Kind kind;
  const char* code;
  const char* text;
};
constexpr std::array names{
    Name{Kind::error, "error", "出错"}, Name{Kind::disconnected, "disconnected", "未连接"},
    Name{Kind::connecting, "connecting", "正在连接"}, Name{Kind::connected, "connected", "已连接"}};

const Name& nameOf(Kind kind) {
  return *std::ranges::find(names, kind, &Name::kind);
}

std::filesystem::path fileIn(const std::filesystem::path& folder) {
  return folder / "status.json";
}

// FNV-1a: a root's path as the name of a folder.
std::string shortHash(std::string_view text) {
  std::uint64_t hash = 0xCBF29CE484222325;
  for (const char character : text)
    hash = (hash ^ static_cast<unsigned char>(character)) * 0x100000001B3;
  return fmt::format("{:016x}", hash);
}

std::optional<Moment> momentIn(const Json& json, const char* key) {
  const auto found = json.find(key);
  if (found == json.end() || !found->is_string()) return std::nullopt;
  return DateFormatters::parseUtcTimestamp(found->get_ref<const std::string&>());
}

}  // namespace

const char* connectionCode(Kind kind) {
  return nameOf(kind).code;
}

std::string connectionText(const ConnectionStatus& status) {
  return status.kind == Kind::error ? status.text : nameOf(status.kind).text;
}

Json BotStatus::json() const {
  Json json{{"status", connectionCode(connection.kind)},
            {"text", connection.text},
            {"since", DateFormatters::utcTimestamp(since)},
            {"recorded", recorded}};
  if (lastRecorded) json["lastRecorded"] = DateFormatters::utcTimestamp(*lastRecorded);
  json["process"] = process;
  return json;
}

std::filesystem::path BotStatus::folder(const Environment& environment,
                                        const std::filesystem::path& root) {
  std::error_code ignored;
  const std::filesystem::path whole = std::filesystem::weakly_canonical(root, ignored);
  return environment.stateFolder() / "bot" /
         shortHash(whole.empty() ? root.native() : whole.native());
}

std::optional<BotStatus> BotStatus::read(const std::filesystem::path& folder,
                                         const FileManager& files) {
  constexpr std::uint64_t longest = 1 << 16;
  try {
    const auto bytes = files.read(fileIn(folder), longest);
    if (!bytes) return std::nullopt;
    const Json json = readJson(*bytes);
    BotStatus status;
    const std::string code = json.at("status").get<std::string>();
    const auto* const name = std::ranges::find(names, code, &Name::code);
    const auto since = momentIn(json, "since");
    if (name == names.end() || !since) return std::nullopt;
    status.connection = {name->kind, json.at("text").get<std::string>()};
    status.since = *since;
    status.lastRecorded = momentIn(json, "lastRecorded");
    status.recorded = json.at("recorded").get<std::int64_t>();
    status.process = json.at("process").get<std::int64_t>();
    return status;
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

void BotStatus::write(const std::filesystem::path& folder, const FileManager& files) const {
  files.createDirectories(folder, 0700);
  files.writeAtomically(fileIn(folder), json().dump() + "\n");
}

}  // namespace nomely
