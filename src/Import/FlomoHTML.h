#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Import/ImportedMemo.h"
#include "Platform/Time/Clock.h"

namespace nomely {

// Reads the page that flomo makes of a user's notes.
//
//   <div class="memo">
//     <div class="time">2026-03-05 21:30:00</div>
//     <div class="content"><p>晚上好 #随笔</p></div>
//     <div class="files"><img src="file/a.jpg" /></div>
//   </div>
//
// is a note of 2026-03-05, 21:30, with the body "晚上好", the tag "随笔" and the reference
// "file/a.jpg". Anything may stand in such a page; what is no note gives none.
namespace FlomoHTML {

// A page that comes piece by piece: each note is handed on when its end has been seen, so that one
// note at a time is held. For one thread.
class Reader {
 public:
  using Take = std::function<void(ImportedMemo&&)>;
  // Notes without a readable time are of `today`.
  Reader(Day today, Take take) : today_(today), take_(std::move(take)) {}

  // Throw ImportError where a note is not UTF-8.
  void feed(std::string_view piece);
  void finish();

 private:
  void takeNote(std::string_view block) const;

  Day today_;
  Take take_;
  std::string buffer_;        // from the beginning of the note under way
  std::size_t searched_ = 0;  // no note begins before that
  bool isInNote_ = false;
};

[[nodiscard]] std::vector<ImportedMemo> parse(std::string_view html, Day today);

}  // namespace FlomoHTML

}  // namespace nomely
