#include "Feishu/Messages/FeishuInbox.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include <fmt/format.h>

#include "Core/Extensions/DateFormatters.h"
#include "Core/Storage/BotFiles.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"
#include "Platform/System/Uuid.h"
#include "Platform/Text/JsonReading.h"

namespace nomely {
namespace {

using Kind = FeishuMessage::Kind;
using Entry = FeishuInbox::Entry;

constexpr std::array<const char*, 5> kindNames{"text", "image", "audio", "post", "file"};
constexpr std::array<const char*, 2> typeNames{"image", "file"};
constexpr std::string_view ending = ".json";
constexpr unsigned ownersFile = 0600;
constexpr unsigned ownersFolder = 0700;
// An event has four mebibytes, and JSON may take six bytes for one.
constexpr std::uint64_t largest = 32ULL << 20U;

std::filesystem::path folderIn(const StoreContext& context) {
  return context.paths.metaFolder() / BotFiles::inbox;
}

std::filesystem::path asideIn(const StoreContext& context) {
  return folderIn(context) / BotFiles::aside;
}

template <std::size_t count>
std::size_t indexOf(const std::array<const char*, count>& names, const Json& json) {
  const auto& name = json.get_ref<const std::string&>();
  const auto at = std::ranges::find(names, name);
  if (at == names.end()) throw JsonError("json.member", "收件箱里有不认识的消息");
  return static_cast<std::size_t>(at - names.begin());
}

Moment momentOf(const Json& json) {
  const auto moment = DateFormatters::parseUtcTimestamp(json.get_ref<const std::string&>());
  if (!moment) throw JsonError("json.member", "收件箱里有读不懂的时间");
  return *moment;
}

std::string encoded(const Entry& entry) {
  const FeishuMessage& message = entry.message;
  Json resources = Json::array();
  for (const auto& [key, type] : message.resources)
    resources.push_back({{"key", key}, {"type", typeNames[static_cast<std::size_t>(type)]}});
  const Json json{{"kind", kindNames[static_cast<std::size_t>(message.kind)]},
                  {"messageId", message.messageId},
                  {"text", message.text},
                  {"resources", std::move(resources)},
                  {"date", DateFormatters::utcTimestamp(entry.date)},
                  {"received", DateFormatters::utcTimestamp(entry.received)}};
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::optional<Entry> decoded(std::string name, std::string_view bytes) {
  try {
    const Json json = readJson(bytes);
    FeishuMessage message{.kind = static_cast<Kind>(indexOf(kindNames, json.at("kind"))),
                          .messageId = json.at("messageId").get<std::string>(),
                          .text = json.at("text").get<std::string>()};
    for (const Json& resource : json.at("resources"))
      message.resources.push_back(
          {resource.at("key").get<std::string>(),
           static_cast<FeishuAPI::Resource>(indexOf(typeNames, resource.at("type")))});
    return Entry{std::move(name), std::move(message), momentOf(json.at("date")),
                 momentOf(json.at("received"))};
  } catch (const JsonError&) {
    return std::nullopt;
  } catch (const Json::exception&) {
    return std::nullopt;
  }
}

std::vector<std::string> namesIn(const StoreContext& context, const std::filesystem::path& folder) {
  std::vector<std::string> names;
  if (!context.files.exists(folder)) return names;
  for (DirectoryEntry& entry : context.files.listVisible(folder))
    if (entry.name.ends_with(ending)) names.push_back(std::move(entry.name));
  return names;
}

}  // namespace

FeishuInbox::Entry FeishuInbox::put(const FeishuMessage& message, Moment date) const {
  const auto& id = message.messageId;
  Entry entry{fmt::format("{}{}", id.empty() ? Uuid::random().string() : id, ending), message,
              std::chrono::floor<std::chrono::seconds>(date),
              std::chrono::floor<std::chrono::seconds>(context_.clock.now())};
  context_.write([&] {
    const std::filesystem::path folder = folderIn(context_);
    context_.files.createDirectories(folder, ownersFolder);
    context_.prepareFolder(folder);
    // One that lies there says the same.
    (void)context_.files.createAtomically(folder / entry.name, encoded(entry), ownersFile);
  });
  return entry;
}

bool FeishuInbox::holds(const std::string& messageId) const {
  return FeishuAPI::isSafeName(messageId) &&
         context_.files.exists(folderIn(context_) / fmt::format("{}{}", messageId, ending));
}

void FeishuInbox::remove(const Entry& entry) const {
  context_.write([&] { context_.files.removeFile(folderIn(context_) / entry.name); });
}

void FeishuInbox::putAside(const std::string& name) const {
  context_.write([&] {
    const std::filesystem::path folder = asideIn(context_);
    context_.files.createDirectories(folder, ownersFolder);
    std::filesystem::path place = folder / name;
    if (context_.files.exists(place))
      place = folder / fmt::format("{}_{}", Uuid::random().string(), name);
    context_.files.moveFile(folderIn(context_) / name, place);
  });
}

FeishuInbox::Contents FeishuInbox::contents() const {
  Contents contents;
  for (std::string& name : namesIn(context_, folderIn(context_))) {
    try {
      const auto bytes = context_.files.read(folderIn(context_) / name, largest);
      if (!bytes) continue;  // gone since the folder was listed
      if (auto entry = decoded(name, *bytes))
        contents.entries.push_back(std::move(*entry));
      else
        contents.damaged.push_back(std::move(name));
    } catch (const FileError& error) {
      Log::error(LogChannel::feishu, "收件箱里的 {} 读不出来：{}", name, error.what());
    }
  }
  std::ranges::stable_sort(contents.entries, {}, &Entry::received);
  return contents;
}

FeishuInbox::Counts FeishuInbox::counts(const StoreContext& context) {
  return {.waiting = namesIn(context, folderIn(context)).size(),
          .aside = namesIn(context, asideIn(context)).size()};
}

}  // namespace nomely
