#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "Core/Models/Memo.h"
#include "Core/Storage/StoreContext.h"
#include "Platform/Files/OpenFolder.h"

namespace nomely {

// Reads the files of one day after another, with a buffer that it keeps. For one thread at a time.
class DayReader {
 public:
  explicit DayReader(const StoreContext& context) : context_(context) {}

  // Opens a day's folder and gives its visible entries, by name; they and the folder are there till
  // the next call. Throws FileError.
  const std::vector<DirectoryEntry>& open(Day day);

  // What a memo file of that day holds; absent when it is gone. In the buffer till the next call.
  // Throws FileError, also for more than MemoFile::maxSize.
  [[nodiscard]] std::optional<FileContent> read(const std::string& name);

  // The number of the memo that a day keeps under this name: "007.md" → 7. None for "7.md", in
  // which no memo is looked for.
  [[nodiscard]] static std::optional<std::int64_t> memoNumber(std::string_view name);

  // The memo in a file's bytes. Throws EncodingError, ParseError.
  [[nodiscard]] Memo parsed(const std::string& name, std::string_view bytes) const;
  // The same without its body.
  [[nodiscard]] Memo parsedHeader(const std::string& name, std::string_view bytes) const;

 private:
  void requireText(const std::string& name, std::string_view bytes) const;

  const StoreContext& context_;
  std::filesystem::path path_;
  std::unique_ptr<OpenFolder> folder_;
  std::vector<DirectoryEntry> entries_;
  ReadBuffer buffer_;
};

}  // namespace nomely
