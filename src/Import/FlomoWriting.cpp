#include "Import/FlomoWriting.h"

#include <algorithm>
#include <utility>

#include "Core/Extensions/AttachmentNamingKit.h"
#include "Core/Extensions/PathNames.h"
#include "Import/ImportTags.h"
#include "Platform/Cancellation.h"
#include "Platform/System/Log.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

// What the gate is held for at once, and what waits for the disk together.
constexpr std::size_t notesAtOnce = 1000;
constexpr std::size_t textAtOnce = std::size_t{8} << 20;
constexpr std::uint64_t bytesAtOnce = std::uint64_t{64} << 20;

// flomo calls some pictures "abc.undefined".
std::string extensionOf(const std::string& reference, const std::string& firstBytes) {
  constexpr std::size_t longest = 16;
  std::string extension =
      lowerCaseExtension(lastComponent(FlomoSource::normalizedMediaRef(reference)));
  if (!extension.empty() && extension != "undefined" && extension.size() <= longest)
    return extension;
  return FileTypeDetector::magicExtension(firstBytes).value_or("");
}

// Whether the memo is that of the note, and has none of its files.
bool isRepairable(const Memo& memo, const ImportedMemo& note) {
  return memo.attachments.empty() && trimSpaceAndBreaks(memo.body) == note.body;
}

}  // namespace

struct FlomoWriting::Batch {
  explicit Batch(const StoreContext& context) : memos(context), repairFiles(context) {}
  [[nodiscard]] std::uint64_t bytes() const { return memos.bytes() + repairFiles.bytes(); }

  MemoBatch memos;
  std::vector<KnownNotes::Known*> known;  // of each of them

  // An existing memo that gets the files that it lacks.
  struct Repair {
    const ImportedMemo* note;
    std::int64_t seqNumber;
    std::vector<std::string> names;
  };
  MemoBatch repairFiles;
  std::vector<Repair> repairs;
};

void FlomoWriting::add(ImportedMemo&& note) {
  waitingBytes_ += note.body.size();
  waiting_.push_back(std::move(note));
  if (waiting_.size() >= notesAtOnce || waitingBytes_ >= textAtOnce) writeWaiting();
}

FlomoImportResult FlomoWriting::finish() {
  writeWaiting();
  const StoreContext& context = service_.context();
  // Also when nothing was written: an import that was killed may have left that to this one.
  if (context.files.exists(context.paths.rootURL)) MemoBatch::settle(context);
  result_.daysAffected = days_.size();
  result_.attachmentsMissing = missing_.size();
  return result_;
}

void FlomoWriting::writeWaiting() {
  const std::vector<ImportedMemo> notes = std::exchange(waiting_, {});
  waitingBytes_ = 0;
  for (auto note = notes.begin(); note != notes.end();) {
    service_.context().write([&] {
      Batch batch(service_.context());
      for (; note != notes.end() && batch.bytes() < bytesAtOnce; ++note) {
        throwIfStopped(run_.stop);
        write(*note, batch);
      }
      place(batch);
    });
  }
}

void FlomoWriting::write(const ImportedMemo& note, Batch& batch) {
  if (note.body.empty()) return;
  if (KnownNotes::Known* known = known_.find(note.date, note.body)) {
    if (known->hasAttachments || note.mediaRefs.empty()) return;
    if (!known->isWritten) place(batch);
    return repair(note, *known, batch);
  }
  Memo memo;
  memo.time = note.time;
  memo.body = note.body;
  memo.source = "flomo";
  memo.tags = note.tags;
  memo.tags.emplace_back(ImportTags::flomo);
  memo.attachments = saveMedia(note, batch.memos);
  KnownNotes::Known& known = known_.add(note.date, note.body, !memo.attachments.empty());
  memo.seqNumber = known.seqNumber;
  batch.memos.add(note.date, std::move(memo));
  batch.known.push_back(&known);
}

void FlomoWriting::place(Batch& batch) {
  auto known = batch.known.begin();
  batch.memos.place([&](Day day, const Memo& memo) {
    (*known)->seqNumber = memo.seqNumber;
    (*known)->isWritten = true;
    ++known;
    ++result_.memosImported;
    days_.insert(day);
  });
  batch.known.clear();
  if (!batch.repairs.empty()) placeRepairs(batch);
}

void FlomoWriting::repair(const ImportedMemo& note, KnownNotes::Known& known, Batch& batch) {
  const auto memo = service_.days().memoStore().read(note.date, known.seqNumber);
  if (!memo || !isRepairable(*memo, note)) return;
  std::vector<std::string> names = saveMedia(note, batch.repairFiles);
  if (names.empty()) return;
  known.hasAttachments = true;
  batch.repairs.push_back({&note, known.seqNumber, std::move(names)});
}

void FlomoWriting::placeRepairs(Batch& batch) {
  batch.repairFiles.place();
  auto repair = batch.repairs.begin();
  try {
    for (; repair != batch.repairs.end(); ++repair) {
      const auto stored = service_.rewrite(repair->note->date, repair->seqNumber, [&](Memo& memo) {
        if (!isRepairable(memo, *repair->note)) return false;
        memo.attachments = repair->names;
        return true;
      });
      if (stored)
        ++result_.memosRepaired;
      else
        takeBack(repair->note->date, repair->names);
    }
  } catch (...) {
    for (; repair != batch.repairs.end(); ++repair) takeBack(repair->note->date, repair->names);
    throw;
  }
  batch.repairs.clear();
}

std::vector<std::string> FlomoWriting::saveMedia(const ImportedMemo& note, MemoBatch& batch) {
  constexpr std::size_t tellingBytes = 12;
  std::vector<std::string> names;
  for (const std::string& reference : note.mediaRefs) {
    std::optional<std::string> name;
    try {
      std::string first;
      if (const FlomoSource::Media media = source_.media(reference))
        name = batch.addFile(
            note.date,
            [&](const FlomoSource::Sink& sink) {
              media([&](std::string_view piece) {
                throwIfStopped(run_.stop);
                if (first.size() < tellingBytes) first += piece.substr(0, tellingBytes);
                sink(piece);
              });
            },
            [&] { return extensionOf(reference, first); });
    } catch (const CancellationError&) {
      throw;
    } catch (const Error& error) {
      Log::error(LogChannel::importer, "FlomoImporter: 保存附件失败 {}", error.what());
    }
    if (name)
      names.push_back(*std::move(name));
    else
      missing_.insert(reference);
  }
  result_.attachmentsImported += names.size();
  return names;
}

// But for what a memo names.
void FlomoWriting::takeBack(Day day, const std::vector<std::string>& names) const noexcept {
  try {
    const auto named = service_.days().filesNamed(day);
    if (!named) return;
    for (const std::string& name : names)
      if (!named->contains(name)) AttachmentManager(service_.context()).removeImported(name, day);
  } catch (const std::exception& error) {
    Log::error(LogChannel::importer, "⚠️ FlomoImporter.takeBack: {}", error.what());
  }
}

}  // namespace nomely
