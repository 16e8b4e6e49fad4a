#pragma once

#include <cstdint>
#include <string_view>

#include "Media/Libav.h"

namespace nomely::media {

// Gives the library a file that is already open, so that it need open none itself. It has a
// position of its own and leaves the descriptor's alone.
class DescriptorIO {
 public:
  enum class Use { read, write };

  DescriptorIO(int descriptor, Use use);
  // Bytes in memory to be read, which have to outlive this.
  explicit DescriptorIO(std::string_view bytes);
  ~DescriptorIO();
  DescriptorIO(const DescriptorIO&) = delete;
  DescriptorIO& operator=(const DescriptorIO&) = delete;

  [[nodiscard]] AVIOContext* context() { return context_; }

 private:
  void makeContext(Use use);
  [[nodiscard]] std::int64_t size() const;
  static int read(void* self, std::uint8_t* buffer, int size);
  static int write(void* self, std::uint8_t* buffer, int size);
  static std::int64_t seek(void* self, std::int64_t offset, int whence);

  int descriptor_ = -1;
  std::string_view bytes_;  // without a descriptor
  std::int64_t position_ = 0;
  AVIOContext* context_ = nullptr;
};

// For AVFormatContext::io_open: whatever a file asks to have opened is refused.
int refuseToOpen(AVFormatContext* format, AVIOContext** opened, const char* url, int flags,
                 AVDictionary** options);

}  // namespace nomely::media
