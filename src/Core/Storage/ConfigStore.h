#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "Core/Storage/ConfigField.h"
#include "Core/Storage/StoreContext.h"
#include "Platform/Error.h"

namespace nomely {

// A settings file, or a value for one, that can't be used. `what()` says where and what to mend.
class ConfigError : public Error {
 public:
  enum class Kind {
    invalid,
    holdsSecret,  // the file would have to be replaced, and a secret in it would be lost
    badValue,     // of a user
  };
  ConfigError(Kind kind, const std::string& text);
  [[nodiscard]] Kind kind() const noexcept { return kind_; }

 private:
  Kind kind_;
};

// The settings files in the root's _config folder, each the YAML of one record. A record has
// `configFields(record)` (ConfigField.h); keys that are none of its fields go with the next save.
//
// Secrets lie in the keychain. One that a file still holds is read into the record, and stays in
// the file through every save until ConfigSecrets has moved it; one that only the record holds is
// never written.
//
// Loads run on the caller's thread, on any; changes in the root's gate. Everything throws FileError
// and ConfigError.
class ConfigStore {
 public:
  explicit ConfigStore(StoreContext context) : context_(std::move(context)) {}

  // Absent without a file. An invalid one stays where it is, and a copy without its secrets is kept
  // beside it, one for each distinct content: "ai-config.yaml.corrupt-1772330400".
  template <typename Record>
  [[nodiscard]] std::optional<Record> load(std::string_view fileName) const {
    Record record;
    if (!read(fileName, configFields(record))) return std::nullopt;
    return record;
  }

  template <typename Record>
  void save(const Record& record, std::string_view fileName) const {
    Record copy = record;
    const ConfigFields fields = configFields(copy);
    context_.write([&] { replace(fileName, fields, {}); });
  }

  // Saves what `alter(Record&)` makes of the record as the file has it at that moment, so that what
  // another process changed stays; of `fallback` where there is none or an invalid one. Returns it.
  template <typename Record, typename Alter>
  Record change(std::string_view fileName, const Record& fallback, Alter alter) const {
    return context_.write([&] {
      Record record = fallback;
      try {
        if (auto stored = load<Record>(fileName)) record = *std::move(stored);
      } catch (const ConfigError&) {
        // Its copy is kept; what can be saved comes from the fallback.
      }
      alter(record);
      replace(fileName, configFields(record), {});
      return record;
    });
  }

  // Takes those secrets out of the file, if it still holds them with these values.
  template <typename Record>
  void takeOut(const ConfigField::Map& secrets, std::string_view fileName) const {
    context_.write([&] {
      Record record;
      const ConfigFields fields = configFields(record);
      if (read(fileName, fields)) replace(fileName, fields, secrets);
    });
  }

  // Makes an existing file one that its owner alone can read.
  void restrict(std::string_view fileName) const;

 private:
  [[nodiscard]] std::filesystem::path file(std::string_view fileName) const {
    return context_.paths.configFolder() / fileName;
  }
  [[nodiscard]] std::optional<std::string> contentOf(std::string_view fileName) const;
  bool read(std::string_view fileName, const ConfigFields& fields) const;
  // Inside a write.
  void replace(std::string_view fileName, const ConfigFields& fields,
               const ConfigField::Map& without) const;
  // The name of the copy; empty when none could be made.
  std::string preserveCorrupt(std::string_view fileName, const std::string& content,
                              const ConfigFields& fields) const noexcept;

  StoreContext context_;
};

}  // namespace nomely
