#include "Platform/Settings/KeychainStore.h"

#include "Platform/Text/Unicode.h"

namespace nomely {

std::optional<std::string> KeychainStore::string(std::string_view account) const {
  SecretLookup found = lookUp(account);
  if (found.state != SecretLookup::State::found) return std::nullopt;
  return std::move(found.value);
}

SecretLookup KeychainStore::lookUp(std::string_view account) const {
  SecretLookup found = backend_.lookUp(service_, account);
  if (found.state == SecretLookup::State::found && !isValidUtf8(found.value)) return {};
  return found;
}

bool KeychainStore::setString(std::string_view value, std::string_view account) const {
  try {
    if (value.empty())
      forget(account);
    else
      (void)store(value, account);
    return true;
  } catch (const SecretError&) {
    return false;
  }
}

bool KeychainStore::remove(std::string_view account) const {
  return setString({}, account);
}

SecretPlace KeychainStore::store(std::string_view value, std::string_view account) const {
  return backend_.store(service_, account, value);
}

void KeychainStore::forget(std::string_view account) const {
  backend_.remove(service_, account);
}

}  // namespace nomely
