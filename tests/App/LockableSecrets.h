#pragma once

#include <atomic>

#include "Platform/Settings/MemorySecrets.h"

namespace nomely::test {

// A keyring that its user may lock.
class LockableSecrets final : public SecretBackend {
 public:
  SecretLookup lookUp(std::string_view service, std::string_view account) override {
    ++calls;
    if (isLocked) return {.state = SecretLookup::State::unavailable, .problem = "锁着"};
    return inner.lookUp(service, account);
  }
  SecretPlace store(std::string_view service, std::string_view account,
                    std::string_view value) override {
    throwIfLocked();
    return inner.store(service, account, value);
  }
  void remove(std::string_view service, std::string_view account) override {
    throwIfLocked();
    inner.remove(service, account);
  }

  std::atomic<bool> isLocked = false;
  std::atomic<int> calls = 0;
  MemorySecrets inner;

 private:
  void throwIfLocked() {
    ++calls;
    if (isLocked) throw SecretError(SecretError::Kind::locked, "锁着");
  }
};

}  // namespace nomely::test
