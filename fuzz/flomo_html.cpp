// Foreign exports of flomo: any page gives notes that read back as they were stored, however it is
// cut into pieces, or is refused.

#include "Core/Storage/MemoFile.h"
#include "Import/FlomoHTML.h"
#include "Import/ImportError.h"
#include "Platform/Text/Unicode.h"
#include "fuzz/Fuzzing.h"

using namespace nomely;
using fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view page = fuzz::textOf(data, size);
  const Day today = Day::parse("2026-03-01").value();
  std::vector<ImportedMemo> notes;
  try {
    notes = FlomoHTML::parse(page, today);
  } catch (const ImportError&) {
    return 0;
  }
  std::size_t count = 0;
  FlomoHTML::Reader reader(today, [&](ImportedMemo&& note) {
    require(count < notes.size());
    const ImportedMemo& whole = notes[count++];
    require(note.body == whole.body && note.tags == whole.tags &&
            note.mediaRefs == whole.mediaRefs);
  });
  constexpr std::size_t piece = 7;
  for (std::size_t at = 0; at < page.size(); at += piece) reader.feed(page.substr(at, piece));
  reader.finish();
  require(count == notes.size());
  for (const ImportedMemo& note : notes) {
    Memo memo;
    memo.time = note.time;
    memo.body = note.body;
    memo.tags = note.tags;
    const Memo read = MemoFile::parsed(MemoFile::contentOf(memo), 0);
    require(trimSpaceAndBreaks(read.body) == note.body && read.tags == note.tags);
  }
  return 0;
}
