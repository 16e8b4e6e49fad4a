#include "Core/Query/SizedEntry.h"

#include "Core/Extensions/AttachmentKinds.h"
#include "Platform/Files/FileError.h"

namespace nomely {

std::uint64_t audioBytes(const MemoEntry& entry, const StoreContext& context) {
  std::uint64_t bytes = 0;
  for (const std::string& name : entry.memo->attachments) {
    if (!AttachmentKinds::isAudio(name)) continue;
    try {
      const auto file = context.files.attributes(context.paths.dayFolder(entry.date) / name);
      bytes += file ? file->size : 0;
    } catch (const FileError&) {
      // A file whose size can't be read counts as 0 bytes.
    }
  }
  return bytes;
}

bool isLarger(const SizedEntry& left, const SizedEntry& right) {
  return left.bytes != right.bytes ? left.bytes > right.bytes
                                   : orderedBefore(left.entry, right.entry);
}

}  // namespace nomely
