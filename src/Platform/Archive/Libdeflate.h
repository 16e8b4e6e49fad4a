#pragma once

#include <cstdint>
#include <string_view>

#include <libdeflate.h>

#include "Platform/System/LazyLibrary.h"

namespace nomely {

// libdeflate's functions, looked up in the library once: contents that are held whole take it less
// than half the time that zlib takes, and checksums a tenth.
class Libdeflate {
 private:
  LazyLibrary library_{"libdeflate.so.0"};

 public:
  // The process's one. Throws LazyLibrary::MissingError. Safe on any thread.
  [[nodiscard]] static const Libdeflate& loaded() {
    static const Libdeflate libdeflate;
    return libdeflate;
  }

#define NOMELY_LIBDEFLATE(name) \
  decltype(::name)* const name = library_.function<decltype(::name)>(#name)
  NOMELY_LIBDEFLATE(libdeflate_alloc_compressor);
  NOMELY_LIBDEFLATE(libdeflate_deflate_compress);
  NOMELY_LIBDEFLATE(libdeflate_free_compressor);
  NOMELY_LIBDEFLATE(libdeflate_alloc_decompressor);
  NOMELY_LIBDEFLATE(libdeflate_deflate_decompress_ex);
  NOMELY_LIBDEFLATE(libdeflate_free_decompressor);
  NOMELY_LIBDEFLATE(libdeflate_crc32);
#undef NOMELY_LIBDEFLATE

  // The CRC-32 of the bytes that gave `checksum` (0: of none) followed by `bytes`.
  [[nodiscard]] std::uint32_t checksum(std::uint32_t checksum, std::string_view bytes) const {
    return libdeflate_crc32(checksum, bytes.data(), bytes.size());
  }
};

}  // namespace nomely
