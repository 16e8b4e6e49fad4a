#pragma once

#include <string>
#include <string_view>

#include "Platform/Error.h"

namespace nomely {

// What a look-up of a secret gives. "Unavailable" is not "none": a locked store can't tell, and
// nothing may be deleted or replaced because of it.
struct SecretLookup {
  enum class State { found, none, unavailable };
  State state = State::none;
  std::string value = {};    // when found
  std::string problem = {};  // when unavailable: why, and what to do about it, in Chinese
};

// Where a store keeps its secrets.
enum class SecretPlace {
  keyring,
  ownFile,  // a file that its user alone can read, and whoever reads the disk
};

// A secret could not be kept or removed.
class SecretError : public Error {
 public:
  enum class Kind {
    locked,       // the store is there and has to be unlocked by its user first
    unavailable,  // the store does not answer
    failed,       // it refused
  };
  SecretError(Kind kind, const std::string& text);
  [[nodiscard]] Kind kind() const noexcept { return kind_; }

 private:
  Kind kind_;
};

// A store of the user's secrets, by service and account. Calls block for at most a few seconds;
// any thread.
class SecretBackend {
 public:
  virtual ~SecretBackend() = default;
  // Never throws.
  [[nodiscard]] virtual SecretLookup lookUp(std::string_view service, std::string_view account) = 0;
  // Both throw SecretError. Removing what isn't there is no error.
  virtual SecretPlace store(std::string_view service, std::string_view account,
                            std::string_view value) = 0;
  virtual void remove(std::string_view service, std::string_view account) = 0;
};

}  // namespace nomely
