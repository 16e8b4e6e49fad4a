// An archive of any bytes is refused, or gives entries of the sizes that it tells; what is proven
// to be a backup can be unpacked without one entry touching another's place.

#include <set>

#include "Core/Lifecycle/Backup/BackupArchive.h"
#include "Platform/Text/JsonReading.h"
#include "Support/MemoryFileSystem.h"
#include "fuzz/Fuzzing.h"

namespace {

using namespace nomely;

void readEntries(const ZipReader& reader, std::size_t size) {
  fuzz::require(reader.entries().size() <= size / 46);
  ZipReader::Cursor cursor(reader);
  for (const ZipEntry* entry : reader.inFileOrder()) {
    fuzz::require(reader.find(entry->name)->name == entry->name);
    std::uint64_t given = 0;
    try {
      cursor.read(*entry, [&](std::string_view piece) {
        fuzz::require(!piece.empty() && piece.size() <= entry->size - given);
        given += piece.size();
      });
      fuzz::require(given == entry->size);
    } catch (const ZipError&) {
    }
  }
}

void prove(FileSystem& files) {
  const BackupArchive archive(files, "/disk/a.zip");
  const BackupArchive::Contents contents = archive.prove({});
  std::uint64_t bytes = 0;
  std::set<std::filesystem::path> places;
  for (const ZipEntry& entry : archive.zip().entries()) {
    bytes += entry.size;
    const auto whole = ("/diary" / std::filesystem::path(entry.name)).lexically_normal();
    fuzz::require(whole.native().starts_with("/diary/"));
    fuzz::require(places.insert(entry.isFolder() ? whole.parent_path() : whole).second);
  }
  fuzz::require(bytes == contents.bytes && contents.notes <= contents.files);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  test::MemoryFileSystem files("/disk", {{"a.zip", std::string(fuzz::textOf(data, size))}});
  try {
    readEntries(ZipReader(files, "/disk/a.zip"), size);
    prove(files);
  } catch (const ZipError&) {
  } catch (const BackupError&) {
  } catch (const JsonError&) {
  }
  return 0;
}
