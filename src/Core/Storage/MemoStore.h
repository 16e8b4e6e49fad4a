#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Core/Models/Memo.h"
#include "Core/Storage/DataWriteCoordinator.h"
#include "Core/Storage/StoreContext.h"
#include "Platform/Error.h"

namespace nomely {

// A memo file that is not well-formed UTF-8.
class EncodingError : public Error {
 public:
  explicit EncodingError(const std::filesystem::path& file);
};

// Reads and writes single memo files. Stateless; safe on any thread. Writes pass the gate.
class MemoStore {
 public:
  explicit MemoStore(StoreContext context);

  // Absent when there is no such file. The memo has that number and a fresh `id`. Throws
  // FileError, EncodingError, ParseError.
  [[nodiscard]] std::optional<Memo> read(Day day, std::int64_t seqNumber) const;

  // Puts the memo under its number, replacing what is there. Throws FileError, YamlError,
  // WriteError.
  void write(const Memo& memo, Day day) const;
  // The same for a new memo: false, and nothing written, when the number is taken.
  [[nodiscard]] bool create(const Memo& memo, Day day) const;

  // Removes the file; none there is no error. Throws FileError, WriteError.
  void remove(Day day, std::int64_t seqNumber) const;

  // Never fails: an unreadable file gives an empty memo with the present time, so that a list can
  // show a row for it. Must not be written back.
  [[nodiscard]] static Memo parseMemoFile(std::string_view content, std::int64_t seqNumber,
                                          const Clock& clock);

 private:
  [[nodiscard]] static std::string contentOf(const Memo& memo);

  StoreContext context_;
  DataWriteCoordinator& writes_;
};

}  // namespace nomely
