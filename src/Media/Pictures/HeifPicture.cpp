#include "Media/Pictures/HeifPicture.h"

#ifdef NOMELY_HEIF
#include <dlfcn.h>
#include <libheif/heif.h>
#endif

namespace nomely::media {

bool HeifPicture::isAt(const QByteArray& begin) {
  if (begin.mid(4, 4) != "ftyp") return false;
  const QByteArray brand = begin.mid(8, 4);
  return brand == "heic" || brand == "heix" || brand == "heim" || brand == "heis" ||
         brand == "mif1";
}

#ifdef NOMELY_HEIF

namespace {

class Library {
 public:
  Library() : handle_(::dlopen("libheif.so.1", RTLD_NOW)) {}

  [[nodiscard]] bool isThere() const { return handle_ != nullptr; }
  // The function of that name; the argument tells its type.
  template <typename Function>
  [[nodiscard]] Function* get(const char* name, Function* /*type*/) const {
    return reinterpret_cast<Function*>(::dlsym(handle_, name));
  }

 private:
  void* handle_;
};

#define NOMELY_HEIF_CALL(name) library.get(#name, &(name))

bool isFine(const heif_error& error) {
  return error.code == heif_error_Ok;
}

}  // namespace

// Nothing is given back: the process ends with its one picture.
struct HeifPicture::Parts {
  Library library;
  const uchar* bytes = nullptr;
  std::size_t size = 0;
  heif_image_handle* picture = nullptr;
};

HeifPicture::HeifPicture(QFile& file) : parts_(std::make_unique<Parts>()) {
  parts_->bytes = file.map(0, file.size());
  parts_->size = static_cast<std::size_t>(file.size());
}

QSize HeifPicture::size() {
  const Library& library = parts_->library;
  if (!library.isThere() || parts_->bytes == nullptr) return {};
  heif_context* const context = NOMELY_HEIF_CALL(heif_context_alloc)();
  NOMELY_HEIF_CALL(heif_context_set_max_decoding_threads)(context, 0);
  const bool isRead =
      isFine(NOMELY_HEIF_CALL(heif_context_read_from_memory_without_copy)(context, parts_->bytes,
                                                                          parts_->size, nullptr)) &&
      isFine(NOMELY_HEIF_CALL(heif_context_get_primary_image_handle)(context, &parts_->picture));
  if (!isRead) return {};
  return {NOMELY_HEIF_CALL(heif_image_handle_get_width)(parts_->picture),
          NOMELY_HEIF_CALL(heif_image_handle_get_height)(parts_->picture)};
}

QImage HeifPicture::read() {
  const Library& library = parts_->library;
  if (parts_->picture == nullptr) return {};
  heif_image* image = nullptr;
  if (!isFine(NOMELY_HEIF_CALL(heif_decode_image)(parts_->picture, &image, heif_colorspace_RGB,
                                                  heif_chroma_interleaved_RGBA, nullptr)))
    return {};
  constexpr heif_channel channel = heif_channel_interleaved;
  int stride = 0;
  const uint8_t* const rows =
      NOMELY_HEIF_CALL(heif_image_get_plane_readonly)(image, channel, &stride);
  const QSize size(NOMELY_HEIF_CALL(heif_image_get_width)(image, channel),
                   NOMELY_HEIF_CALL(heif_image_get_height)(image, channel));
  if (rows == nullptr || size.isEmpty() || stride < 4 * size.width()) return {};
  return {rows, size.width(), size.height(), stride, QImage::Format_RGBA8888};
}

#else

struct HeifPicture::Parts {};

HeifPicture::HeifPicture(QFile& /*file*/) {}

QSize HeifPicture::size() {
  return {};
}

QImage HeifPicture::read() {
  return {};
}

#endif

HeifPicture::~HeifPicture() = default;

}  // namespace nomely::media
