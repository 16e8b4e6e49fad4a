#include "Core/Lifecycle/Settling/MetaSettling.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

#include "Core/Lifecycle/Settling/ConflictNames.h"
#include "Core/Storage/BotFiles.h"
#include "Core/Storage/RootMarkers.h"
#include "Platform/Text/JsonReading.h"

namespace nomely {
namespace {

constexpr std::string_view entryEnding = ".json";
constexpr unsigned ownersFolder = 0700;
// Far more than either ever has.
constexpr std::uint64_t largestLog = std::uint64_t{256} << 20;
constexpr std::uint64_t largestEntry = std::uint64_t{32} << 20;

std::optional<Json> parsed(std::string_view bytes) {
  try {
    return readJson(bytes);
  } catch (const JsonError&) {
    return std::nullopt;
  }
}

using Messages = std::set<std::pair<Moment, std::string_view>>;

// A line that was cut off is left out, as by whoever reads the log.
void addMessages(std::string_view log, Messages& messages) {
  while (!log.empty()) {
    const std::string_view line = log.substr(0, log.find('\n'));
    log.remove_prefix(std::min(line.size() + 1, log.size()));
    const auto json = parsed(line);
    if (const auto time = json ? BotFiles::timeOf(*json) : std::nullopt)
      messages.emplace(*time, line);
  }
}

// Most markers have no extension: what is put behind such a name looks like one.
std::string markerOf(std::string_view name) {
  for (const std::string_view marker : RootMarkers::names())
    if (ConflictNames::isCopyOf(name, marker) ||
        (name.starts_with(marker) && name.substr(marker.size()).starts_with('.')))
      return std::string(marker);
  return {};
}

std::string baseOf(std::string_view name) {
  return ConflictNames::isCopyOf(name, BotFiles::log) ? std::string(BotFiles::log) : markerOf(name);
}

}  // namespace

std::filesystem::path MetaSettling::inbox() const {
  return context_.paths.metaFolder() / BotFiles::inbox;
}

std::vector<SecondForm> MetaSettling::found() const {
  const std::filesystem::path meta = context_.paths.metaFolder();
  std::vector<SecondForm> forms = SecondForms::in(context_, meta, baseOf);
  if (!context_.files.isDirectory(inbox())) return forms;
  // Any name may be that of a message.
  const std::vector<DirectoryEntry> entries = context_.files.listVisible(inbox());
  for (const DirectoryEntry& base : entries) {
    if (base.type != FileType::regular || !base.name.ends_with(entryEnding)) continue;
    for (const DirectoryEntry& entry : entries) {
      const SecondForm form{inbox() / entry.name, inbox() / base.name};
      if (entry.type == FileType::regular && ConflictNames::isCopyOf(entry.name, base.name) &&
          areOneMessage(form))
        forms.push_back(form);
    }
  }
  return forms;
}

bool MetaSettling::areOneMessage(const SecondForm& form) const {
  const auto entryIn = [&](const std::filesystem::path& file) {
    return parsed(context_.files.read(file, largestEntry).value_or(""));
  };
  const auto entry = entryIn(form.file);
  const auto base = entryIn(form.base);
  return entry && base && BotFiles::messageIdOf(*entry) &&
         BotFiles::messageIdOf(*entry) == BotFiles::messageIdOf(*base);
}

void MetaSettling::settle(const SecondForm& form) {
  context_.write([&] {
    if (!markerOf(form.file.filename().native()).empty()) return settleMarker(form);
    if (SecondForms::settlePlainly(context_, form, result_)) return;
    if (form.file.parent_path() == inbox())
      settleInbox(form);
    else
      settleLog(form);
  });
}

// One that is gone was taken back here.
void MetaSettling::settleMarker(const SecondForm& form) {
  if (!context_.files.removeFile(form.file)) return;
  SecondForms::tell(context_, form, "多余，已删除", result_);
  ++result_.others;
}

void MetaSettling::settleLog(const SecondForm& form) {
  const auto present = context_.files.read(form.base, largestLog);
  const auto other = context_.files.read(form.file, largestLog);
  if (!present || !other) return;
  Messages messages;
  addMessages(*present, messages);
  addMessages(*other, messages);
  while (messages.size() > BotFiles::mostLogLines) messages.erase(messages.begin());
  std::string all;
  for (const auto& [time, line] : messages) all.append(line) += '\n';
  if (all != *present) context_.files.writeAtomically(form.base, all);
  context_.files.removeFile(form.file);
  SecondForms::tell(context_, form, "两边的聊天记录已合并", result_);
  ++result_.others;
}

void MetaSettling::settleInbox(const SecondForm& form) {
  if (!areOneMessage(form)) return;
  const std::filesystem::path aside = inbox() / BotFiles::aside;
  context_.files.createDirectories(aside, ownersFolder);
  SecondForms::moveAside(context_, form.file, aside / form.file.filename());
  SecondForms::tell(context_, form, "同一条消息的另一份，已移到 aside", result_);
  ++result_.others;
}

}  // namespace nomely
