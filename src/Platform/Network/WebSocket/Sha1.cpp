#include "Platform/Network/WebSocket/Sha1.h"

#include <openssl/sha.h>

#include "Platform/System/LazyLibrary.h"

namespace nomely {

std::string sha1(std::string_view bytes) {
  static const LazyLibrary library("libcrypto.so.3");
  static const auto digest = library.function<decltype(::SHA1)>("SHA1");
  std::string result(SHA_DIGEST_LENGTH, '\0');
  digest(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(),
         reinterpret_cast<unsigned char*>(result.data()));
  return result;
}

}  // namespace nomely
