#pragma once

#define ZLIB_CONST
#include <zlib.h>

#include "Platform/System/LazyLibrary.h"

namespace nomely {

// zlib's functions for contents too large to be held, looked up in the library once.
class Zlib {
 private:
  LazyLibrary library_{"libz.so.1"};

 public:
  // The process's one. Throws LazyLibrary::MissingError. Safe on any thread.
  [[nodiscard]] static const Zlib& loaded() {
    static const Zlib zlib;
    return zlib;
  }

#define NOMELY_ZLIB(name) decltype(::name)* const name = library_.function<decltype(::name)>(#name)
  NOMELY_ZLIB(inflateInit2_);
  NOMELY_ZLIB(inflateReset);
  NOMELY_ZLIB(inflate);
  NOMELY_ZLIB(inflateEnd);
  NOMELY_ZLIB(deflateInit2_);
  NOMELY_ZLIB(deflate);
  NOMELY_ZLIB(deflateEnd);
#undef NOMELY_ZLIB
};

}  // namespace nomely
