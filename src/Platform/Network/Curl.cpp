#include "Platform/Network/Curl.h"

namespace nomely {

Curl::Curl() {
  curl_global_init(CURL_GLOBAL_DEFAULT);
}

const Curl& Curl::loaded() {
  // Never unloaded: a look-up of a name that outlasts its request runs in the library.
  static const Curl& curl = *new Curl();
  return curl;
}

}  // namespace nomely
