#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "Core/Models/Memo.h"
#include "Platform/Error.h"
#include "Platform/Files/FileManager.h"

namespace nomely {

// A memo file that is not well-formed UTF-8.
class EncodingError : public Error {
 public:
  explicit EncodingError(const std::filesystem::path& file);
};

// Files in the format of a memo, wherever they lie: in a day, in the trash, among snapshots.
// Writes nothing; any thread.
namespace MemoFile {

// Far more than anyone writes by hand. Without a bound, listing a day with a huge file would use up
// the memory.
inline constexpr std::uint64_t maxSize = std::uint64_t{64} << 20;  // bytes

// The file's text; absent when there is no such file. Throws FileError (tooLarge above maxSize) and
// EncodingError.
[[nodiscard]] std::optional<std::string> text(const FileManager& files,
                                              const std::filesystem::path& file);

// The memo with that number and a fresh `id`. Throws like text, and ParseError.
[[nodiscard]] std::optional<Memo> read(const FileManager& files, const std::filesystem::path& file,
                                       std::int64_t seqNumber);

// The memo that a file with this text holds. Throws ParseError.
[[nodiscard]] Memo parsed(std::string_view text, std::int64_t seqNumber);

// The text of the memo's file. Throws YamlError for what could not be read again, which must not
// replace what can.
[[nodiscard]] std::string contentOf(const Memo& memo);

}  // namespace MemoFile

}  // namespace nomely
