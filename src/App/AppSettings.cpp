#include "App/AppSettings.h"

#include <algorithm>
#include <array>
#include <utility>

#include <fmt/format.h>

#include "AI/Transcription/SpeechEngines.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

constexpr std::array<AppSettings::SecretName, 5> names{{
    {"ai", "ai.apiKey", "AI 服务的 API Key"},
    {"tts-key", "tts.apiKey", "语音合成的 Access Token"},
    {"tts-appid", "tts.appid", "语音合成的 App ID"},
    {"feishu", "feishu.appSecret", "飞书应用的 App Secret"},
    {"transcription", "transcription.apiKey", "转写服务的 API Key"},
}};

std::string_view keyOfSecret(std::string_view name) {
  const auto found = std::ranges::find(names, name, &AppSettings::SecretName::name);
  if (found == names.end()) throw UnknownSettingError(fmt::format("没有这个密钥：{}", name));
  return found->key;
}

std::string stampOf(const StoreContext& storage, std::string_view fileName) {
  try {
    const auto file = storage.files.attributes(storage.paths.configFolder() / fileName);
    if (!file) return "-;";
    return fmt::format("{},{},{};", file->fileNumber, file->size,
                       file->modified.time_since_epoch().count());
  } catch (const Error&) {
    return "?;";
  }
}

}  // namespace

// Holds the lock, and tells of problems after it has let go.
class AppSettings::Access {
 public:
  explicit Access(AppSettings& settings) : settings_(settings), lock_(settings.mutex_) {}
  ~Access() {
    const std::vector<std::string> problems = std::exchange(settings_.problems_, {});
    lock_.unlock();
    try {
      for (const std::string& problem : problems)
        if (settings_.onProblem) settings_.onProblem(problem);
    } catch (const std::exception& error) {
      Log::error(LogChannel::app, "⚠️ AppSettings.onProblem: {}", error.what());
    }
  }
  Access(const Access&) = delete;
  Access& operator=(const Access&) = delete;

 private:
  AppSettings& settings_;
  std::unique_lock<std::mutex> lock_;
};

AppSettings::AppSettings(const StoreContext& storage, SecretBackend& secrets, Source source)
    : source_(source), storage_(storage), configs_(storage), keychain_(secrets) {}

void AppSettings::reload() {
  const Access access(*this);
  forEachSlot([](auto& each) {
    each.wasLoaded |= each.isLoaded;
    each.isLoaded = false;
  });
}

std::string AppSettings::stamp() const {
  std::string stamp;
  std::apply(
      [&](const auto&... each) { ((stamp += stampOf(storage_, each.record.fileName)), ...); },
      slots_);
  return stamp;
}

template <typename Record>
void AppSettings::read(Slot<Record>& slot) {
  if (std::exchange(slot.isLoaded, true) || source_ == Source::defaults) return;
  try {
    slot.record = configs_.load<Record>(Record::fileName).value_or(Record());
  } catch (const Error& error) {
    problems_.push_back(
        fmt::format("{}。{}", error.what(), slot.wasLoaded ? "沿用之前的设置" : "这次用默认设置"));
    return;
  }
  Record moved = slot.record;
  try {
    secrets_.moveOut(moved);
    for (const ConfigField& field : configFields(slot.record))
      if (field.isSecret()) field.secret().clear();
  } catch (const Error& error) {
    problems_.push_back(
        fmt::format("密钥还留在设置文件 {} 里：{}", Record::fileName, error.what()));
  }
}

template <typename Record>
Record AppSettings::withoutSecrets() {
  const Access access(*this);
  Slot<Record>& found = slot<Record>();
  read(found);
  return found.record;
}

template <typename Record>
Record AppSettings::withSecrets() {
  const Access access(*this);
  Slot<Record>& found = slot<Record>();
  read(found);
  Record record = found.record;
  secrets_.fill(configFields(record));
  return record;
}

AIConfig AppSettings::ai() {
  return withSecrets<AIConfig>();
}
TTSConfig AppSettings::tts() {
  return withSecrets<TTSConfig>();
}
TranscriptionConfig AppSettings::transcription() {
  auto config = withoutSecrets<TranscriptionConfig>();
  return asksServer(config) ? withSecrets<TranscriptionConfig>() : config;
}
FeishuConfig AppSettings::feishu() {
  return withSecrets<FeishuConfig>();
}
DisplayConfig AppSettings::display() {
  return withoutSecrets<DisplayConfig>();
}

template AIConfig AppSettings::withoutSecrets();
template TTSConfig AppSettings::withoutSecrets();
template TranscriptionConfig AppSettings::withoutSecrets();
template FeishuConfig AppSettings::withoutSecrets();

SettingsRecords AppSettings::records() {
  const Access access(*this);
  forEachSlot([&](auto& each) {
    read(each);
    each.lastShown = each.record;
    for (const ConfigField& field : configFields(each.lastShown))
      if (field.isSecret() && field.secret().empty())
        field.secret() = keychain_.string(field.account).value_or("");
  });
  return {slot<AIConfig>().lastShown, slot<TTSConfig>().lastShown,
          slot<TranscriptionConfig>().lastShown, slot<FeishuConfig>().lastShown,
          slot<DisplayConfig>().lastShown};
}

template <typename Record>
void AppSettings::saveEdited(Slot<Record>& slot, const Record& edited) {
  read(slot);
  Record wanted = edited;
  const ConfigFields fields = configFields(wanted);
  const ConfigFields shown = configFields(slot.lastShown);
  const ConfigFields kept = configFields(slot.record);
  try {
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (!fields[i].isSecret()) continue;
      const std::string secret = std::exchange(fields[i].secret(), kept[i].secret());
      if (secret == shown[i].secret()) continue;
      if (keychain_.setString(secret, fields[i].account)) {
        shown[i].secret() = secret;
        takeOutOfFile(slot, fields[i].key);
        fields[i].secret().clear();
      } else {
        problems_.push_back(
            fmt::format("{}.{} 没能存进密钥环，没有改动", slot.section, fields[i].key));
      }
    }
    slot.record = wanted;
    if (source_ == Source::files) configs_.save(wanted, Record::fileName);
  } catch (const Error& error) {
    Log::error(LogChannel::app, "⚠️ AppSettings.saveAllConfigs: {}", error.what());
  }
}

void AppSettings::saveAllConfigs(const SettingsRecords& edited) {
  const Access access(*this);
  saveEdited(slot<AIConfig>(), edited.ai);
  saveEdited(slot<TTSConfig>(), edited.tts);
  saveEdited(slot<TranscriptionConfig>(), edited.transcription);
  saveEdited(slot<FeishuConfig>(), edited.feishu);
  saveEdited(slot<DisplayConfig>(), edited.display);
}

std::vector<AppSettings::Setting> AppSettings::settings() {
  const Access access(*this);
  std::vector<Setting> all;
  forEachSlot([&](auto& each) {
    read(each);
    for (const ConfigField& field : configFields(each.record)) {
      Setting setting{.key = fmt::format("{}.{}", each.section, field.key),
                      .value = field.isSecret() ? ConfigValue() : valueOf(field),
                      .choices = {},
                      .isSecret = field.isSecret(),
                      .isOptional = field.presence == ConfigField::Presence::optional};
      if (const auto* choice = std::get_if<ConfigField::Choice>(&field.target))
        setting.choices.assign(choice->names.begin(), choice->names.end());
      else if (std::holds_alternative<bool*>(field.target))
        setting.choices = {"true", "false"};
      all.push_back(std::move(setting));
    }
  });
  return all;
}

template <typename Visit>
void AppSettings::withField(std::string_view key, Visit visit) {
  bool isFound = false;
  forEachSlot([&](auto& each) {
    if (isFound || !key.starts_with(each.section) ||
        !key.substr(each.section.size()).starts_with('.'))
      return;
    const std::string_view rest = key.substr(each.section.size() + 1);
    auto probe = each.record;
    for (const ConfigField& field : configFields(probe)) {
      if (field.key != rest) continue;
      isFound = true;
      read(each);
      visit(each, field);
      return;
    }
  });
  if (!isFound)
    throw UnknownSettingError(fmt::format("没有这项设置：{}，见 nomely config list", key));
}

void AppSettings::set(std::string_view key, const std::string& text) {
  const Access access(*this);
  withField(key, [&](auto& found, const ConfigField& field) {
    using Record = std::decay_t<decltype(found.record)>;
    if (field.isSecret())
      throw UnknownSettingError(fmt::format("{} 是密钥，请用 nomely secret set 设置", key));
    const auto apply = [&](Record& record) {
      for (const ConfigField& each : configFields(record))
        if (each.key == field.key) return setFromText(each, text);
    };
    try {
      Record tried = found.record;
      apply(tried);  // before anything is written
    } catch (const ConfigError& error) {
      throw ConfigError(error.kind(), fmt::format("{}.{}", found.section, error.what()));
    }
    found.record = configs_.change(Record::fileName, found.record, apply);
  });
}

std::vector<std::string> AppSettings::filesWithSecrets() const {
  std::vector<std::string> found;
  if (source_ == Source::defaults) return found;
  const auto look = [&]<typename Record>(const Slot<Record>&) {
    try {
      auto record = configs_.load<Record>(Record::fileName);
      if (!record) return;
      for (const ConfigField& field : configFields(*record))
        if (field.isSecret() && !field.secret().empty()) {
          found.emplace_back(Record::fileName);
          return;
        }
    } catch (const Error&) {
      // Whoever reads the settings tells of it.
    }
  };
  std::apply([&](const auto&... each) { (look(each), ...); }, slots_);
  return found;
}

std::span<const AppSettings::SecretName> AppSettings::secretNames() {
  return names;
}

SecretLookup AppSettings::lookUpSecret(std::string_view name) {
  const Access access(*this);
  SecretLookup result;
  withField(keyOfSecret(name), [&](auto& found, const ConfigField& field) {
    for (const ConfigField& each : configFields(found.record))
      if (each.key == field.key && !each.secret().empty())
        result = {SecretLookup::State::found, each.secret()};
    if (result.state == SecretLookup::State::none) result = keychain_.lookUp(field.account);
  });
  return result;
}

template <typename Record>
void AppSettings::takeOutOfFile(Slot<Record>& slot, std::string_view fieldKey) {
  for (const ConfigField& field : configFields(slot.record)) {
    if (field.key != fieldKey || field.secret().empty()) continue;
    configs_.takeOut<Record>({{std::string(fieldKey), field.secret()}}, Record::fileName);
    field.secret().clear();
  }
}

SecretPlace AppSettings::setSecret(std::string_view name, const std::string& value) {
  const Access access(*this);
  SecretPlace place{};
  withField(keyOfSecret(name), [&](auto& found, const ConfigField& field) {
    place = keychain_.store(value, field.account);
    takeOutOfFile(found, field.key);
  });
  return place;
}

void AppSettings::removeSecret(std::string_view name) {
  const Access access(*this);
  withField(keyOfSecret(name), [&](auto& found, const ConfigField& field) {
    keychain_.forget(field.account);
    takeOutOfFile(found, field.key);
  });
}

}  // namespace nomely
