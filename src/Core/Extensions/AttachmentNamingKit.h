#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace nomely {

// How attachments are shown: their stored names mean nothing to a reader. Pure but for the file
// size, which looks at the file.
namespace AttachmentNamingKit {

// The original name without extension; without one "a1b2.png" → "PNG 文件", "a1b2" → "文件".
[[nodiscard]] std::string displayName(std::string_view filename,
                                      const std::optional<std::string>& originalName);
// ("a1b2.png", "会议：上/下") → "会议-上-下.png"; `filename` itself when `title` is empty.
[[nodiscard]] std::string suggestedDownloadName(std::string_view filename, std::string_view title);

// "1.2 MB", in powers of 1000; absent when the file's attributes can't be read.
[[nodiscard]] std::optional<std::string> fileSizeLabel(const std::filesystem::path& file);
[[nodiscard]] std::string byteCountLabel(std::uint64_t bytes);

// The symbol and the colour ("#RRGGBB") of a file of that type.
[[nodiscard]] std::string fileIcon(std::string_view filename);
[[nodiscard]] std::string typeColorHex(std::string_view filename);
// The symbol for what a link points to, chosen by its path's extension.
[[nodiscard]] std::string linkIcon(std::string_view url);

}  // namespace AttachmentNamingKit

namespace FileTypeDetector {
// The extension that goes with the bytes at the beginning of a file; absent for an unknown type.
[[nodiscard]] std::optional<std::string> magicExtension(std::string_view bytes);
}  // namespace FileTypeDetector

}  // namespace nomely
