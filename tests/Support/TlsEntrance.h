#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Support/LoopbackListener.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {

// A port of 127.0.0.1 that speaks TLS and hands on what it decrypts to another port. Its
// certificate, made with it, is for "localhost" and signed by itself. What the other side ends is
// ended here without a word, as by a network that goes.
class TlsEntrance {
 public:
  explicit TlsEntrance(std::uint16_t to);
  ~TlsEntrance();

  // "localhost:40123"
  [[nodiscard]] std::string authority() const;
  [[nodiscard]] std::uint16_t port() const { return listener_.port(); }
  // Whom to trust to get in.
  [[nodiscard]] std::string certificates() const { return folder_.path() / "certificate.pem"; }

 private:
  class Context;

  void carry(int outer) const;

  const TemporaryFolder folder_;
  const std::unique_ptr<Context> context_;
  const std::uint16_t to_;
  const LoopbackListener listener_{[this](int outer) { carry(outer); }};
};

}  // namespace nomely::test
