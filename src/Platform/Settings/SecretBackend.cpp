#include "Platform/Settings/SecretBackend.h"

namespace nomely {
namespace {

constexpr std::string_view codeOf(SecretError::Kind kind) {
  switch (kind) {
    case SecretError::Kind::locked:
      return "secret.locked";
    case SecretError::Kind::unavailable:
      return "secret.unavailable";
    case SecretError::Kind::failed:
      break;
  }
  return "secret.failed";
}

}  // namespace

SecretError::SecretError(Kind kind, const std::string& text)
    : Error(codeOf(kind), text), kind_(kind) {}

}  // namespace nomely
