#include "Core/Storage/ConfigSecrets.h"

namespace nomely {

using State = SecretLookup::State;

ConfigField::Map ConfigSecrets::restrictHeld(const ConfigFields& fields,
                                             std::string_view fileName) const {
  ConfigField::Map held;
  for (const ConfigField& field : fields)
    if (field.isSecret() && !field.secret().empty())
      held.emplace(std::string(field.key), field.secret());
  if (!held.empty()) configs_.restrict(fileName);
  return held;
}

void ConfigSecrets::storeAll(const ConfigFields& fields) const {
  for (const ConfigField& field : fields) {
    if (!field.isSecret() || field.secret().empty()) continue;
    (void)keychain_.store(field.secret(), field.account);
    const SecretLookup kept = keychain_.lookUp(field.account);
    if (kept.state != State::found || kept.value != field.secret())
      throw SecretError(SecretError::Kind::failed, "密钥存入后读不回来，请检查密钥环");
  }
}

void ConfigSecrets::fill(const ConfigFields& fields) const {
  for (const ConfigField& field : fields) {
    if (!field.isSecret() || !field.secret().empty()) continue;
    SecretLookup found = keychain_.lookUp(field.account);
    if (found.state == State::unavailable)
      throw SecretError(SecretError::Kind::unavailable, found.problem);
    field.secret() = std::move(found.value);
  }
}

}  // namespace nomely
