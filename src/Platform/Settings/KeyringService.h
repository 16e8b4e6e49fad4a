#pragma once

#include <chrono>
#include <mutex>
#include <optional>
#include <string_view>

#include "Platform/Settings/SecretBackend.h"
#include "Platform/System/Environment.h"

namespace nomely {

// The desktop's keyring (the Secret Service), through libsecret, which is loaded by the first call
// that finds a session bus. It never has the user asked for a password by a look-up. Each call
// opens the service anew, since the user may lock or unlock it at any time, and ends after five
// seconds; what let these pass isn't asked again for half a minute.
//
// Where there is no keyring (no bus, no service, or none that is the user's default) nothing is
// done, and each call says so. Safe on any thread. The bus is that of the process; `environment`
// only tells whether there is one.
class KeyringService {
 public:
  explicit KeyringService(const Environment& environment);

  // Absent without a keyring. Never throws.
  [[nodiscard]] std::optional<SecretLookup> lookUp(std::string_view service,
                                                   std::string_view account);
  // False without a keyring. Both throw SecretError.
  [[nodiscard]] bool store(std::string_view service, std::string_view account,
                           std::string_view value);
  [[nodiscard]] bool remove(std::string_view service, std::string_view account);

 private:
  class Call;
  // Runs `body(Call&)` where there is an open keyring; false where there is none. Throws
  // SecretError.
  template <typename Body>
  bool ask(std::string_view service, std::string_view account, Body body);

  bool hasBus_;
  std::mutex mutex_;
  std::optional<std::chrono::steady_clock::time_point> silentSince_;
};

}  // namespace nomely
