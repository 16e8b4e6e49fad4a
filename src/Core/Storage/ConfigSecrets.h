#pragma once

#include <string_view>

#include "Core/Storage/ConfigStore.h"
#include "Platform/Settings/KeychainStore.h"

namespace nomely {

// Keeps secrets of settings in the keychain and out of their files. Blocks while the keychain is
// asked; any thread.
class ConfigSecrets {
 public:
  ConfigSecrets(ConfigStore configs, KeychainStore keychain)
      : configs_(std::move(configs)), keychain_(std::move(keychain)) {}

  // Moves the secrets of a record just loaded to the keychain: stores each, reads it back, and then
  // takes it out of the file. From before that the file is its owner's alone. `record` keeps them.
  // Throws SecretError and FileError: then the file still holds them.
  template <typename Record>
  void moveOut(Record& record) const {
    const ConfigField::Map held = restrictHeld(configFields(record), Record::fileName);
    if (held.empty()) return;
    storeAll(configFields(record));
    configs_.takeOut<Record>(held, Record::fileName);
  }

  // Fills in the secrets that the record does not hold. Throws SecretError when one can't be known.
  void fill(const ConfigFields& fields) const;

 private:
  // The secrets in the record, whose file then is for its owner alone.
  [[nodiscard]] ConfigField::Map restrictHeld(const ConfigFields& fields,
                                              std::string_view fileName) const;
  void storeAll(const ConfigFields& fields) const;

  ConfigStore configs_;
  KeychainStore keychain_;
};

}  // namespace nomely
