#include "Platform/Archive/Inflater.h"

#include <algorithm>
#include <new>

#include "Platform/Archive/Libdeflate.h"
#include "Platform/Archive/Zlib.h"

namespace nomely {

struct Inflater::Whole {
  Whole() {
    if (state == nullptr) throw std::bad_alloc();
  }
  ~Whole() { library.libdeflate_free_decompressor(state); }
  Whole(const Whole&) = delete;
  Whole& operator=(const Whole&) = delete;

  const Libdeflate& library = Libdeflate::loaded();
  libdeflate_decompressor* state = library.libdeflate_alloc_decompressor();
};

struct Inflater::Stream {
  Stream() {
    // Negative: no header before the data and no checksum after them.
    if (library.inflateInit2_(&state, -MAX_WBITS, ZLIB_VERSION, sizeof(state)) != Z_OK)
      throw std::bad_alloc();
  }
  ~Stream() { library.inflateEnd(&state); }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;

  const Zlib& library = Zlib::loaded();
  z_stream state = {};
};

Inflater::Inflater() = default;
Inflater::~Inflater() = default;

std::optional<std::string_view> Inflater::whole(std::string_view compressed, std::size_t size) {
  if (!whole_) whole_ = std::make_unique<Whole>();
  const std::span<char> room = buffer_.room(size, 0);
  std::size_t taken = 0;
  const libdeflate_result result = whole_->library.libdeflate_deflate_decompress_ex(
      whole_->state, compressed.data(), compressed.size(), room.data(), size, &taken, nullptr);
  if (result != LIBDEFLATE_SUCCESS || taken != compressed.size()) return std::nullopt;
  return std::string_view(room.data(), size);
}

bool Inflater::stream(const Source& source, std::uint64_t size, const Sink& sink) {
  if (stream_)
    stream_->library.inflateReset(&stream_->state);
  else
    stream_ = std::make_unique<Stream>();
  z_stream& state = stream_->state;
  constexpr std::size_t pieceSize = std::size_t{1} << 16;
  const std::span<char> room = buffer_.room(pieceSize, 0).first(pieceSize);
  state.avail_in = 0;
  std::uint64_t given = 0;
  for (;;) {
    if (state.avail_in == 0) {
      const std::string_view piece = source();
      if (piece.empty()) return false;
      state.next_in = reinterpret_cast<const Bytef*>(piece.data());
      state.avail_in = static_cast<uInt>(piece.size());
    }
    state.next_out = reinterpret_cast<Bytef*>(room.data());
    state.avail_out = static_cast<uInt>(room.size());
    const int result = stream_->library.inflate(&state, Z_NO_FLUSH);
    if (result != Z_OK && result != Z_STREAM_END) return false;
    const std::size_t length = room.size() - state.avail_out;
    if (length > size - given) return false;
    given += length;
    if (length > 0) sink(std::string_view(room.data(), length));
    if (result == Z_STREAM_END) return given == size && state.avail_in == 0 && source().empty();
  }
}

}  // namespace nomely
