#pragma once

#include "Platform/Settings/FileSecrets.h"
#include "Platform/Settings/KeyringService.h"

namespace nomely {

// The user's secrets: in the desktop's keyring, and on a machine without one in a file under the
// state folder. What lies in the file moves to the keyring when that can be had. With a locked
// keyring nothing new is kept anywhere: it would be forgotten there once the keyring opens.
//
// Made without any call. Safe on any thread.
class DesktopSecrets final : public SecretBackend {
 public:
  DesktopSecrets(const Environment& environment, FileSystem& fileSystem);

  [[nodiscard]] SecretLookup lookUp(std::string_view service, std::string_view account) override;
  SecretPlace store(std::string_view service, std::string_view account,
                    std::string_view value) override;
  void remove(std::string_view service, std::string_view account) override;

 private:
  // Takes the secret out of the file, where the keyring is known to have it. What can't be taken
  // out is not worth failing for: it is tried again.
  void forget(std::string_view service, std::string_view account) noexcept;
  void moveToKeyring(std::string_view service, std::string_view account,
                     const std::string& value) noexcept;

  KeyringService keyring_;
  FileSecrets file_;
};

}  // namespace nomely
