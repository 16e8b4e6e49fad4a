// A foreign MP4 file gives samples that lie in it, and no more of them than its tables have room
// for.

#include <sys/mman.h>
#include <unistd.h>

#include "Media/SampleTable.h"
#include "fuzz/Fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace nomely;
  const int file = ::memfd_create("foreign", MFD_CLOEXEC);
  fuzz::require(file >= 0 && ::write(file, data, size) == static_cast<ssize_t>(size));
  if (const auto table = media::SampleTable::ofLongFile(file, 1)) {
    fuzz::require(table->header().size() <= size + 8);
    const media::Packet packet(media::require(::av_packet_alloc()));
    std::size_t count = 0;
    while (table->next(*packet)) {
      fuzz::require(packet->size >= 0 && static_cast<std::size_t>(packet->size) <= size);
      fuzz::require(++count <= size / 4);
    }
  }
  ::close(file);
  return 0;
}
