#pragma once

#include <cstdint>
#include <filesystem>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "Support/TemporaryFolder.h"

namespace nomely::test {

// A port of 127.0.0.1 that speaks TLS and hands on what it decrypts to another port. Its
// certificate, made with it, is for "localhost" and signed by itself. What the other side ends is
// ended here without a word, as by a network that goes.
class TlsEntrance {
 public:
  explicit TlsEntrance(std::uint16_t to);
  ~TlsEntrance();
  TlsEntrance(const TlsEntrance&) = delete;
  TlsEntrance& operator=(const TlsEntrance&) = delete;

  // "localhost:40123"
  [[nodiscard]] std::string authority() const;
  [[nodiscard]] std::uint16_t port() const { return port_; }
  // Whom to trust to get in.
  [[nodiscard]] std::string certificates() const { return folder_.path() / "certificate.pem"; }

 private:
  class Context;
  struct Passage;

  void accept();
  void carry(const Passage& passage) const;

  const TemporaryFolder folder_;
  const std::unique_ptr<Context> context_;
  const std::uint16_t to_;
  int listening_ = -1;
  std::uint16_t port_ = 0;
  std::mutex mutex_;
  bool closing_ = false;
  std::list<Passage> passages_;
  std::jthread accepting_;
};

}  // namespace nomely::test
