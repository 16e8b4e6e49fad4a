#pragma once

#include <functional>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "AI/Transcription/TranscriptionConfig.h"
#include "AI/Vendor/AIConfig.h"
#include "AI/Voice/TTSConfig.h"
#include "Core/Storage/ConfigSecrets.h"
#include "Core/Storage/ConfigValue.h"
#include "Core/Storage/DisplayConfig.h"
#include "Feishu/FeishuConfig.h"
#include "Platform/Error.h"

namespace nomely {

// No setting or secret has that name.
class UnknownSettingError : public Error {
 public:
  explicit UnknownSettingError(const std::string& text) : Error("setting.unknown", text) {}
};

// All records of settings, as pages show them: with the secrets that could be had.
struct SettingsRecords {
  AIConfig ai;
  TTSConfig tts;
  TranscriptionConfig transcription;
  FeishuConfig feishu;
  DisplayConfig display;
};

// The user's settings. Each file is read when its record is first needed; one that is missing or
// invalid gives the defaults. Secrets that a file holds move to the keychain then; others are
// looked up at each call that gives them out. Under a test host no file is read.
//
// Safe on any thread; calls that concern secrets may block for a few seconds.
class AppSettings {
 public:
  enum class Source { files, defaults };
  AppSettings(const StoreContext& storage, SecretBackend& secrets, Source source);

  // For a process that stays while others change the files: each is read again when its record is
  // next needed. One that can't be read by then leaves its record as it was.
  void reload();
  // Changes with every change of a file.
  [[nodiscard]] std::string stamp() const;

  // Told, once for each reading of a file, what is wrong with it, in Chinese.
  std::function<void(const std::string& problem)> onProblem;

  // With their secrets. Throw SecretError when one can't be known.
  [[nodiscard]] AIConfig ai();
  [[nodiscard]] TTSConfig tts();
  [[nodiscard]] TranscriptionConfig transcription();  // without the key where no server is asked
  [[nodiscard]] FeishuConfig feishu();
  [[nodiscard]] DisplayConfig display();
  // Without the keychain being asked: a secret is empty unless it could not leave the file.
  template <typename Record>
  [[nodiscard]] Record withoutSecrets();

  // For pages. Never throws.
  [[nodiscard]] SettingsRecords records();
  // Keeps what a page made of records(). Of the secrets only those that differ from what records()
  // gave last are stored or removed. What can't be kept is told through onProblem; the settings
  // hold in memory all the same.
  void saveAllConfigs(const SettingsRecords& edited);

  // One by one, for a command: "ai.model".
  struct Setting {
    std::string key;
    ConfigValue value;  // none for a secret
    std::vector<std::string> choices;
    bool isSecret = false;
    bool isOptional = false;
  };
  // In the files' order.
  [[nodiscard]] std::vector<Setting> settings();
  // Saves at once. Throws UnknownSettingError, also for a secret, ConfigError and FileError.
  void set(std::string_view key, const std::string& text);

  // The files under `_config` that hold a secret, for instance because no keychain took it. Moves
  // none.
  [[nodiscard]] std::vector<std::string> filesWithSecrets() const;

  // The secrets by the names that a user types: "ai", "tts-key"...
  struct SecretName {
    std::string_view name;
    std::string_view key;  // of the setting
    std::string_view help;
  };
  [[nodiscard]] static std::span<const SecretName> secretNames();
  // Throws UnknownSettingError.
  [[nodiscard]] SecretLookup lookUpSecret(std::string_view name);
  // Both throw UnknownSettingError, SecretError and, where the file held one, its errors.
  SecretPlace setSecret(std::string_view name, const std::string& value);
  void removeSecret(std::string_view name);

 private:
  template <typename Record>
  struct Slot {
    std::string_view section;  // the first part of its keys
    bool isLoaded = false;
    bool wasLoaded = false;  // before a reload
    Record record = {};      // as the file has it
    Record lastShown = {};   // as records() gave it out last
  };
  class Access;

  template <typename Record>
  [[nodiscard]] Slot<Record>& slot() {
    return std::get<Slot<Record>>(slots_);
  }
  // Calls `visit(slot)` for each.
  template <typename Visit>
  void forEachSlot(Visit visit) {
    std::apply([&](auto&... each) { (visit(each), ...); }, slots_);
  }
  // Calls `visit(slot, field)` with what has that key; the field is that of a copy of the record.
  template <typename Visit>
  void withField(std::string_view key, Visit visit);

  template <typename Record>
  [[nodiscard]] Record withSecrets();

  // The rest needs the lock.
  template <typename Record>
  void read(Slot<Record>& slot);
  template <typename Record>
  void saveEdited(Slot<Record>& slot, const Record& edited);
  // Takes out of the file a secret that has been replaced or removed in the keychain.
  template <typename Record>
  void takeOutOfFile(Slot<Record>& slot, std::string_view fieldKey);

  Source source_;
  StoreContext storage_;
  ConfigStore configs_;
  KeychainStore keychain_;
  ConfigSecrets secrets_{configs_, keychain_};
  std::mutex mutex_;
  std::vector<std::string> problems_;  // to be told of
  std::tuple<Slot<AIConfig>, Slot<TTSConfig>, Slot<TranscriptionConfig>, Slot<FeishuConfig>,
             Slot<DisplayConfig>>
      slots_{{"ai"}, {"tts"}, {"transcription"}, {"feishu"}, {"display"}};
};

}  // namespace nomely
