#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Platform/Settings/SecretBackend.h"

namespace nomely {

// The program's own secrets by account, in a store that it shares with other programs. Cheap to
// copy; the backend must outlive it. Blocks for at most a few seconds; any thread.
class KeychainStore {
 public:
  static constexpr std::string_view ownService = "com.tarvik.Nomely";

  explicit KeychainStore(SecretBackend& backend, std::string service = std::string(ownService))
      : backend_(backend), service_(std::move(service)) {}

  // Absent when there is none, when the store can't tell, and for what is not UTF-8. Never throws.
  [[nodiscard]] std::optional<std::string> string(std::string_view account) const;
  // The same in three answers. Never throws.
  [[nodiscard]] SecretLookup lookUp(std::string_view account) const;

  // An empty value removes. Whether it is done; never throws.
  bool setString(std::string_view value, std::string_view account) const;
  bool remove(std::string_view account) const;

  // The same for those who want the reason. Throw SecretError.
  SecretPlace store(std::string_view value, std::string_view account) const;
  void forget(std::string_view account) const;

 private:
  SecretBackend& backend_;
  std::string service_;
};

}  // namespace nomely
