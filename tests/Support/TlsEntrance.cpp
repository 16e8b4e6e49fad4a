#include "Support/TlsEntrance.h"

#include <array>
#include <stdexcept>

#include <arpa/inet.h>
#include <fmt/format.h>
#include <netinet/in.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>
#include <poll.h>
#include <sys/socket.h>

#include "Platform/Network/WithoutPipeSignal.h"
#include "Platform/System/Descriptor.h"

namespace nomely::test {
namespace {

template <typename Made, typename Free>
std::unique_ptr<Made, Free> owned(Made* made, Free free) {
  if (made == nullptr) throw std::runtime_error("OpenSSL refuses");
  return {made, free};
}

Descriptor connected(std::uint16_t port) {
  Descriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  if (::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
    socket.close();
  return socket;
}

}  // namespace

class TlsEntrance::Context {
 public:
  explicit Context(const std::filesystem::path& certificateFile) {
    const auto key = owned(EVP_EC_gen("P-256"), EVP_PKEY_free);
    const auto certificate = owned(X509_new(), X509_free);
    X509_set_version(certificate.get(), X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), 1);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -3600);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 3600);
    X509_set_pubkey(certificate.get(), key.get());
    X509_NAME* const name = X509_get_subject_name(certificate.get());
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC,
                               reinterpret_cast<const unsigned char*>("localhost"), -1, -1, 0);
    X509_set_issuer_name(certificate.get(), name);
    for (const auto& [kind, value] : {std::pair(NID_subject_alt_name, "DNS:localhost"),
                                      {NID_basic_constraints, "critical,CA:TRUE"}}) {
      const auto extension =
          owned(X509V3_EXT_conf_nid(nullptr, nullptr, kind, value), X509_EXTENSION_free);
      X509_add_ext(certificate.get(), extension.get(), -1);
    }
    X509_sign(certificate.get(), key.get(), EVP_sha256());
    SSL_CTX_use_certificate(context_.get(), certificate.get());
    SSL_CTX_use_PrivateKey(context_.get(), key.get());
    const auto file = owned(std::fopen(certificateFile.c_str(), "w"), std::fclose);
    PEM_write_X509(file.get(), certificate.get());
  }
  [[nodiscard]] auto accept(int socket) const {
    auto ssl = owned(SSL_new(context_.get()), SSL_free);
    SSL_set_fd(ssl.get(), socket);
    if (SSL_accept(ssl.get()) != 1) ssl.reset();
    return ssl;
  }

 private:
  const std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context_ =
      owned(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
};

TlsEntrance::TlsEntrance(std::uint16_t to)
    : context_(std::make_unique<Context>(certificates())), to_(to) {}

TlsEntrance::~TlsEntrance() = default;

std::string TlsEntrance::authority() const {
  return fmt::format("localhost:{}", port());
}

void TlsEntrance::carry(int outer) const {
  const WithoutPipeSignal quiet;
  const auto tls = context_->accept(outer);
  const Descriptor inner = connected(to_);
  if (!tls || inner.get() < 0) return;
  std::array<char, 1 << 14> buffer{};
  for (;;) {
    std::array<pollfd, 2> waited{{{outer, POLLIN, 0}, {inner.get(), POLLIN, 0}}};
    if (SSL_pending(tls.get()) == 0) ::poll(waited.data(), waited.size(), -1);
    if (SSL_pending(tls.get()) > 0 || waited[0].revents != 0) {
      const int count = SSL_read(tls.get(), buffer.data(), static_cast<int>(buffer.size()));
      if (count <= 0 || !sendAll(inner.get(), {buffer.data(), static_cast<std::size_t>(count)}))
        return;
    }
    if (waited[1].revents != 0) {
      const ssize_t count = ::recv(inner.get(), buffer.data(), buffer.size(), 0);
      if (count <= 0 || SSL_write(tls.get(), buffer.data(), static_cast<int>(count)) <= 0) return;
    }
  }
}

}  // namespace nomely::test
