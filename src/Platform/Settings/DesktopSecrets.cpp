#include "Platform/Settings/DesktopSecrets.h"

#include "Platform/System/Log.h"

namespace nomely {

using State = SecretLookup::State;

DesktopSecrets::DesktopSecrets(const Environment& environment, FileSystem& fileSystem)
    : keyring_(environment),
      file_(environment.stateFolder() / "secrets", FileManager(fileSystem)) {}

SecretLookup DesktopSecrets::lookUp(std::string_view service, std::string_view account) {
  // What the file has is newer than anything in the keyring: it was kept while there was none.
  SecretLookup inFile = file_.lookUp(service, account);
  if (inFile.state == State::found) {
    moveToKeyring(service, account, inFile.value);
    return inFile;
  }
  const auto inKeyring = keyring_.lookUp(service, account);
  // A file that can't be read may hold it.
  if (!inKeyring || inKeyring->state == State::none) return inFile;
  return *inKeyring;
}

SecretPlace DesktopSecrets::store(std::string_view service, std::string_view account,
                                  std::string_view value) {
  if (!keyring_.store(service, account, value)) return file_.store(service, account, value);
  forget(service, account);
  return SecretPlace::keyring;
}

void DesktopSecrets::remove(std::string_view service, std::string_view account) {
  (void)keyring_.remove(service, account);
  file_.remove(service, account);
}

void DesktopSecrets::moveToKeyring(std::string_view service, std::string_view account,
                                   const std::string& value) noexcept {
  try {
    if (!keyring_.store(service, account, value)) return;
    const auto kept = keyring_.lookUp(service, account);
    if (kept && kept->state == State::found && kept->value == value) forget(service, account);
  } catch (const SecretError& error) {
    Log::information(LogChannel::app, "DesktopSecrets: {}", error.what());
  }
}

void DesktopSecrets::forget(std::string_view service, std::string_view account) noexcept {
  try {
    file_.remove(service, account);
  } catch (const Error& error) {
    Log::error(LogChannel::app, "⚠️ DesktopSecrets.forget: {}", error.what());
  }
}

}  // namespace nomely
