#include "Media/DescriptorIO.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include <sys/stat.h>
#include <unistd.h>

namespace nomely::media {
namespace {

constexpr int bufferSize = 64 * 1024;

}  // namespace

DescriptorIO::DescriptorIO(int descriptor, Use use) : descriptor_(descriptor) {
  makeContext(use);
}

DescriptorIO::DescriptorIO(std::string_view bytes) : bytes_(bytes) {
  makeContext(Use::read);
}

void DescriptorIO::makeContext(Use use) {
  const bool writes = use == Use::write;
  auto* const buffer = static_cast<unsigned char*>(require(::av_malloc(bufferSize)));
  context_ = require(::avio_alloc_context(
      buffer, bufferSize, writes ? 1 : 0, this, writes ? nullptr : &DescriptorIO::read,
      writes ? &DescriptorIO::write : nullptr, &DescriptorIO::seek));
}

DescriptorIO::~DescriptorIO() {
  ::av_freep(static_cast<void*>(&context_->buffer));
  ::avio_context_free(&context_);
}

int DescriptorIO::read(void* self, std::uint8_t* buffer, int size) {
  auto& io = *static_cast<DescriptorIO*>(self);
  ssize_t count = -1;
  if (io.descriptor_ < 0) {
    const auto begin = std::min(static_cast<std::size_t>(io.position_), io.bytes_.size());
    count = static_cast<ssize_t>(
        io.bytes_.copy(reinterpret_cast<char*>(buffer), static_cast<std::size_t>(size), begin));
  } else {
    do {
      count = ::pread(io.descriptor_, buffer, static_cast<std::size_t>(size), io.position_);
    } while (count < 0 && errno == EINTR);
  }
  if (count < 0) return AVERROR(errno);
  if (count == 0) return AVERROR_EOF;
  io.position_ += count;
  return static_cast<int>(count);
}

int DescriptorIO::write(void* self, std::uint8_t* buffer, int size) {
  auto& io = *static_cast<DescriptorIO*>(self);
  for (int done = 0; done < size;) {
    const ssize_t count = ::pwrite(io.descriptor_, buffer + done,
                                   static_cast<std::size_t>(size - done), io.position_);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return count < 0 ? AVERROR(errno) : AVERROR(EIO);
    done += static_cast<int>(count);
    io.position_ += count;
  }
  return size;
}

std::int64_t DescriptorIO::size() const {
  if (descriptor_ < 0) return static_cast<std::int64_t>(bytes_.size());
  struct stat status {};
  return ::fstat(descriptor_, &status) == 0 ? status.st_size : AVERROR(errno);
}

std::int64_t DescriptorIO::seek(void* self, std::int64_t offset, int whence) {
  auto& io = *static_cast<DescriptorIO*>(self);
  switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE:
      return io.size();
    case SEEK_SET:
      break;
    case SEEK_CUR:
      offset += io.position_;
      break;
    case SEEK_END:
      offset += io.size();
      break;
    default:
      return AVERROR(EINVAL);
  }
  if (offset < 0) return AVERROR(EINVAL);
  return io.position_ = offset;
}

int refuseToOpen(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**) {
  return AVERROR(EACCES);
}

}  // namespace nomely::media
