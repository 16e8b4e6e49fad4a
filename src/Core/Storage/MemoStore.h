#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Core/Models/Memo.h"
#include "Core/Storage/StoreContext.h"

namespace nomely {

// Reads and writes single memo files, and announces each change to MemoChanges. Stateless; safe on
// any thread. Writes pass the gate.
//
// Blank lines at the beginning of a body are not kept: "\n\ntext" reads back as "text".
class MemoStore {
 public:
  explicit MemoStore(StoreContext context) : context_(std::move(context)) {}

  // Absent when there is no such file. The memo has that number and a fresh `id`. Throws
  // FileError, EncodingError, ParseError.
  [[nodiscard]] std::optional<Memo> read(Day day, std::int64_t seqNumber) const;

  // Puts the memo under its number, replacing what is there; a replaced file's permissions are
  // kept. Throws FileError, YamlError, WriteError.
  void write(const Memo& memo, Day day) const;
  // The same in place of the file that had these attributes (LinkPolicy::noFollow). Throws
  // WriteError (conflict) when another program has written there since.
  void write(const Memo& memo, Day day, const FileAttributes& former) const;
  // Like write, with `content` as the bytes of the file.
  void writeAs(const Memo& memo, Day day, std::string_view content) const;
  // Like write for a new memo. Returns false, with nothing written, when the number is taken.
  [[nodiscard]] bool create(const Memo& memo, Day day) const;
  // Like create, with `content` as the bytes of the file; `permissions` absent: those of any new
  // file.
  [[nodiscard]] bool createAs(const Memo& memo, Day day, std::string_view content,
                              std::optional<unsigned> permissions) const;

  // Removes the file; a missing file is no error. Throws FileError, WriteError.
  void remove(Day day, std::int64_t seqNumber) const;

  // Move a memo's file from its day to the path `to`, or from the path `from` into a day, where its
  // name has to be free. Inside a write. Throw FileError.
  void moveOut(Day day, std::int64_t seqNumber, const std::filesystem::path& to) const;
  void moveIn(const std::filesystem::path& from, Day day, std::int64_t seqNumber) const;

  // Throw WriteError and change nothing: missingMemo, identityChanged when another memo has that
  // place, conflict when `expected` is given and differs from the memo on disk, which is returned.
  Memo validateUpdate(const Memo& memo, Day day, const std::optional<Memo>& expected) const;
  // The same with `memo` as what is expected, but by what is stored: transcript segments make every
  // two readings of a memo unequal. A memo whose header alone was upgraded since is unchanged.
  Memo validateUnchanged(const Memo& memo, Day day) const;

  // Never fails: an unreadable file gives an empty memo with the present time, so that a list can
  // show a row for it. Must not be written back.
  [[nodiscard]] static Memo parseMemoFile(std::string_view content, std::int64_t seqNumber,
                                          const Clock& clock);

 private:
  [[nodiscard]] std::filesystem::path fileOf(const Memo& memo, Day day) const;
  // Runs a step that changes memo files. When it throws, announces that any file may have changed:
  // a step that fails may have had its effect all the same.
  template <typename Step>
  decltype(auto) changing(Step step) const;

  StoreContext context_;
};

}  // namespace nomely
