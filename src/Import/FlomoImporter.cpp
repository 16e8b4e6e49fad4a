#include "Import/FlomoImporter.h"

#include <algorithm>
#include <set>

#include "Core/Extensions/AttachmentKinds.h"
#include "Core/Extensions/PathNames.h"
#include "Import/FlomoExport.h"
#include "Import/FlomoHTML.h"
#include "Import/FlomoWriting.h"
#include "Import/ImportError.h"
#include "Platform/Cancellation.h"

namespace nomely {
namespace {

using Take = FlomoHTML::Reader::Take;

// Throws ImportError when there is none.
void forEachNote(FlomoSource& source, Day today, const ImportRun& run, const Take& take) {
  bool isEmpty = true;
  FlomoHTML::Reader reader(today, [&](ImportedMemo&& note) {
    isEmpty = false;
    take(std::move(note));
  });
  const auto size = static_cast<double>(source.pageSize());
  double done = 0;
  source.readPage([&](std::string_view piece) {
    throwIfStopped(run.stop);
    reader.feed(piece);
    done += static_cast<double>(piece.size());
    if (run.progress && size > 0) run.progress(std::min(done / size, 1.0));
  });
  reader.finish();
  if (isEmpty) throw ImportError("没有找到可导入的笔记");
}

class Previewing {
 public:
  Previewing(const DayStore& days, FlomoSource& source) : known_(days), source_(source) {}

  void add(const ImportedMemo& note) {
    ++summary_.totalItems;
    if (note.body.empty()) {
      ++summary_.emptyBodyCount;
    } else if (KnownNotes::Known* known = known_.find(note.date, note.body)) {
      ++summary_.skippedItems;
      // Whether it is on the disk, or came earlier in the export.
      if (known->isWritten && !known->hasAttachments && hasAnyMedia(note)) {
        known->hasAttachments = true;
        ++summary_.repairedItems;
      }
    } else {
      ++summary_.newItems;
      if (!note.isDated) ++summary_.undatedItems;
      known_.add(note.date, note.body, true);
      dates_.insert(note.date);
      for (const std::string& tag : note.tags)
        if (tags_.insert(tag).second) summary_.tags.push_back(tag);
      references_.insert(note.mediaRefs.begin(), note.mediaRefs.end());
    }
  }

  [[nodiscard]] ImportPreviewSummary finish() {
    summary_.daysAffected = dates_.size();
    summary_.dateRange = ImportPreviewSummary::dateRangeText(dates_);
    for (const std::string& reference : references_) {
      const std::string name = FlomoSource::normalizedMediaRef(reference);
      if (AttachmentKinds::isImage(name) || lowerCaseExtension(lastComponent(name)) == "undefined")
        ++summary_.imageCount;
      else if (AttachmentKinds::isAudio(name))
        ++summary_.audioCount;
      if (!source_.media(reference)) ++summary_.missingAttachments;
    }
    return std::move(summary_);
  }

 private:
  [[nodiscard]] bool hasAnyMedia(const ImportedMemo& note) const {
    return std::ranges::any_of(note.mediaRefs, [&](const std::string& reference) {
      return static_cast<bool>(source_.media(reference));
    });
  }

  KnownNotes known_;
  FlomoSource& source_;
  ImportPreviewSummary summary_;
  std::set<Day> dates_;
  std::set<std::string> tags_;
  std::set<std::string> references_;
};

}  // namespace

ImportPreviewSummary FlomoImporter::previewFromURL(const std::filesystem::path& file,
                                                   const ImportRun& run) const {
  const auto source = openFlomoExport(service_.context().files, file);
  Previewing previewing(service_.days(), *source);
  forEachNote(*source, service_.context().clock.today(), run,
              [&](ImportedMemo&& note) { previewing.add(note); });
  ImportPreviewSummary summary = previewing.finish();
  summary.sourceName = lastComponent(file.native());
  return summary;
}

FlomoImportResult FlomoImporter::importFromURL(const std::filesystem::path& file,
                                               const ImportRun& run) const {
  const StoreContext& context = service_.context();
  const auto source = openFlomoExport(context.files, file);
  const Day today = context.clock.today();
  // Once through without writing: a page that breaks off, or is no text, is no half import.
  forEachNote(*source, today, {run.stop}, [](ImportedMemo&&) {});
  const MemoChanges::Bulk bulk(context.gate.changes());
  FlomoWriting writing(service_, *source, run);
  forEachNote(*source, today, run, [&](ImportedMemo&& note) { writing.add(std::move(note)); });
  return writing.finish();
}

}  // namespace nomely
