#pragma once

#include <stop_token>
#include <string>
#include <vector>

#include "AI/Voice/LockedRecording.h"
#include "Core/Service/MemoService.h"

namespace nomely {

// Makes memos of the recordings whose recorder died before they were in one. Whatever ends the
// process, each recording comes to one memo; several processes may be at it at once. One that a
// draft names is left to whoever opens that draft, and all of them while a draft can't be read.
// Where a program moves drafts to other machines, too, one of the last day is left.
namespace RecordingRecovery {

struct Recovered {
  Day day;
  Memo memo;
};

// What came back, oldest first. A recording that can't be taken in stays, and is logged. Throws
// FileError, WriteError, and CancellationError between two of them when asked to stop.
[[nodiscard]] std::vector<Recovered> run(const MemoService& memos, const std::stop_token& stop);

// Creates a memo with a copy of the recording, of the day and time at which that was begun.
[[nodiscard]] Recovered intoMemo(const std::filesystem::path& recording, Moment begun,
                                 const MemoService& memos);

}  // namespace RecordingRecovery

}  // namespace nomely
