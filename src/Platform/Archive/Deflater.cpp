#include "Platform/Archive/Deflater.h"

#include <array>
#include <new>

#include "Platform/Archive/Libdeflate.h"
#include "Platform/Archive/Zlib.h"
#include "Platform/Files/OpenFolder.h"

namespace nomely {

struct Deflater::Whole {
  Whole() {
    if (state == nullptr) throw std::bad_alloc();
  }
  ~Whole() { library.libdeflate_free_compressor(state); }
  Whole(const Whole&) = delete;
  Whole& operator=(const Whole&) = delete;

  // Higher levels make notes hardly smaller.
  static constexpr int level = 6;
  const Libdeflate& library = Libdeflate::loaded();
  libdeflate_compressor* state = library.libdeflate_alloc_compressor(level);
  ReadBuffer buffer;
};

struct Deflater::Stream::State {
  State() {
    // Negative: no header before the data and no checksum after them.
    constexpr int memoryLevel = 8;  // zlib's own
    if (library.deflateInit2_(&zlib, Z_DEFAULT_COMPRESSION, Z_DEFLATED, -MAX_WBITS, memoryLevel,
                              Z_DEFAULT_STRATEGY, ZLIB_VERSION, sizeof(zlib)) != Z_OK)
      throw std::bad_alloc();
  }
  ~State() { library.deflateEnd(&zlib); }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  const Zlib& library = Zlib::loaded();
  z_stream zlib = {};
  std::array<char, std::size_t{1} << 16> room;
};

Deflater::Deflater() = default;
Deflater::~Deflater() = default;

std::string_view Deflater::whole(std::string_view bytes) {
  if (bytes.empty()) return {};
  if (!whole_) whole_ = std::make_unique<Whole>();
  const std::span<char> room = whole_->buffer.room(bytes.size(), 0);
  const std::size_t length = whole_->library.libdeflate_deflate_compress(
      whole_->state, bytes.data(), bytes.size(), room.data(), bytes.size() - 1);
  return {room.data(), length};
}

Deflater::Stream::Stream(Sink sink) : sink_(std::move(sink)), state_(std::make_unique<State>()) {}
Deflater::Stream::~Stream() = default;

void Deflater::Stream::add(std::string_view piece) {
  state_->zlib.next_in = reinterpret_cast<const Bytef*>(piece.data());
  state_->zlib.avail_in = static_cast<uInt>(piece.size());
  run(Z_NO_FLUSH);
}

void Deflater::Stream::finish() {
  state_->zlib.avail_in = 0;
  run(Z_FINISH);
}

void Deflater::Stream::run(int flush) {
  do {
    state_->zlib.next_out = reinterpret_cast<Bytef*>(state_->room.data());
    state_->zlib.avail_out = static_cast<uInt>(state_->room.size());
    state_->library.deflate(&state_->zlib, flush);
    const std::size_t length = state_->room.size() - state_->zlib.avail_out;
    if (length > 0) sink_(std::string_view(state_->room.data(), length));
  } while (state_->zlib.avail_out == 0);
}

}  // namespace nomely
