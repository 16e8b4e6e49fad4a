#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "Core/Service/MemoService.h"
#include "Core/Storage/MemoBatch.h"
#include "Import/FlomoImportResult.h"
#include "Import/FlomoSource.h"
#include "Import/ImportRun.h"
#include "Import/ImportedMemo.h"
#include "Import/KnownNotes.h"

namespace nomely {

// Writes the notes of one import, a batch at a time. For one thread.
class FlomoWriting {
 public:
  // All must outlive this.
  FlomoWriting(const MemoService& service, FlomoSource& source, const ImportRun& run)
      : service_(service), source_(source), run_(run), known_(service.days()) {}

  // Writes the note with the next batch.
  void add(ImportedMemo&& note);
  // Writes what is left, and returns when all has reached the disk.
  [[nodiscard]] FlomoImportResult finish();

 private:
  struct Batch;

  void writeWaiting();
  void write(const ImportedMemo& note, Batch& batch);
  void place(Batch& batch);
  void repair(const ImportedMemo& note, KnownNotes::Known& known, Batch& batch);
  void placeRepairs(Batch& batch);
  [[nodiscard]] std::vector<std::string> saveMedia(const ImportedMemo& note, MemoBatch& batch);
  void takeBack(Day day, const std::vector<std::string>& names) const noexcept;

  const MemoService& service_;
  FlomoSource& source_;
  const ImportRun& run_;
  KnownNotes known_;
  std::vector<ImportedMemo> waiting_;
  std::size_t waitingBytes_ = 0;
  FlomoImportResult result_;
  std::set<Day> days_;
  std::set<std::string> missing_;
};

}  // namespace nomely
