#include "Platform/System/Digest.h"

#include <openssl/sha.h>

#include "Platform/System/LazyLibrary.h"

namespace nomely {
namespace {

const LazyLibrary& library() {
  static const LazyLibrary theLibrary("libcrypto.so.3");
  return theLibrary;
}

template <typename Function>
std::string digestBy(Function* function, std::string_view bytes, std::size_t length) {
  std::string result(length, '\0');
  function(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(),
           reinterpret_cast<unsigned char*>(result.data()));
  return result;
}

}  // namespace

std::string sha1(std::string_view bytes) {
  static auto* const function = library().function<decltype(::SHA1)>("SHA1");
  return digestBy(function, bytes, SHA_DIGEST_LENGTH);
}

std::string sha256(std::string_view bytes) {
  static auto* const function = library().function<decltype(::SHA256)>("SHA256");
  return digestBy(function, bytes, SHA256_DIGEST_LENGTH);
}

}  // namespace nomely
