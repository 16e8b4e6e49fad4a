#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <vector>

#include "Core/Lifecycle/Settling/MemoText.h"
#include "Core/Storage/DayStore.h"
#include "Core/Storage/MemoPlace.h"

namespace nomely {

// Calls its argument with every memo of the diary that can be read, and its day.
using MemoCensus = std::function<void(const std::function<void(const Memo&, Day)>&)>;

// Where the notes of the diary stand, by identity. What it knows is as old as its making, so files
// are read again before anything is done about them. For one thread.
class StandingNotes {
 public:
  struct Note {
    Day day;
    std::int64_t seqNumber = 0;
    MemoText text;
    Moment modified;  // its file
    Moment changed;   // see FileAttributes
  };

  // `census` absent: all memo files are read. Throws CancellationError, FileError when any
  // of it can't be read from the disk.
  StandingNotes(const DayStore& days, const MemoCensus& census, const std::stop_token& stop);

  // The note that has that identity by now, files that it can't be read from left out, in the order
  // of their places. Throws FileError.
  [[nodiscard]] std::vector<Note> of(const std::string& memoId) const;
  // Whether it stood anywhere; reads nothing.
  [[nodiscard]] bool hasStood(const std::string& memoId) const { return places_.contains(memoId); }
  // Identities that stood more than once.
  [[nodiscard]] std::vector<std::string> shared() const;
  // Memo files that could not be read as memos, and those whose text may hold git's markers.
  [[nodiscard]] const std::vector<MemoPlace>& suspects() const { return suspects_; }
  // Notes that named a file which their day lacked.
  [[nodiscard]] const std::vector<MemoPlace>& lacking() const { return lacking_; }

  // A note has been put there.
  void add(const std::string& memoId, Day day, std::int64_t seqNumber);

  // The note in that file. Absent when it can't be read as one without being mended.
  [[nodiscard]] static std::optional<Note> read(const DayStore& days, Day day,
                                                std::int64_t seqNumber);

 private:
  void count(const Memo& memo, Day day);
  // Reads the files of a day, or only those that are not counted yet.
  void countFiles(Day day);

  const DayStore& days_;
  std::map<std::string, std::vector<MemoPlace>> places_;
  std::map<Day, std::set<std::int64_t>> counted_;
  std::vector<MemoPlace> suspects_;
  std::vector<MemoPlace> lacking_;
};

}  // namespace nomely
