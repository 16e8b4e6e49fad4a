#include "Core/Extensions/AttachmentNamingKit.h"

#include <algorithm>
#include <array>
#include <system_error>

#include <fmt/format.h>

#include "Core/Extensions/PathNames.h"
#include "Platform/Text/Replacing.h"

namespace nomely {
namespace {

struct TypeRow {
  std::string_view extensions;  // separated and enclosed by blanks
  std::string_view icon;
  std::string_view color;
};

constexpr TypeRow unknownType{"", "doc", "#8C8C8C"};

constexpr std::array typeRows{
    TypeRow{" pdf ", "doc.richtext", "#FF4D4F"},
    TypeRow{" doc docx ", "doc.text", "#2F54EB"},
    TypeRow{" xls xlsx csv ", "tablecells", "#52C41A"},
    TypeRow{" ppt pptx ", "rectangle.on.rectangle", "#FA8C16"},
    TypeRow{" xmind ", "brain.head.profile", unknownType.color},
    TypeRow{" zip rar 7z ", "archivebox", "#722ED1"},
    TypeRow{" mp3 wav m4a aac ogg ", "waveform", "#13C2C2"},
    TypeRow{" m4v ", "play.rectangle", "#EB2F96"},
    TypeRow{" md rtf ", "doc.plaintext", "#8C8C8C"},
    TypeRow{" html htm ", "doc", "#FA541C"},
    TypeRow{" json yaml yml ", "doc", "#1677FF"},
};

const TypeRow& rowFor(std::string_view filename) {
  const std::string extension = lowerCaseExtension(filename);
  if (extension.empty() || extension.find(' ') != std::string::npos) return unknownType;
  const std::string word = " " + extension + " ";
  const auto row = std::ranges::find_if(typeRows, [&](const TypeRow& candidate) {
    return candidate.extensions.find(word) != std::string_view::npos;
  });
  return row == typeRows.end() ? unknownType : *row;
}

}  // namespace

std::string AttachmentNamingKit::displayName(std::string_view filename,
                                             const std::optional<std::string>& originalName) {
  if (originalName && !originalName->empty()) {
    const std::string_view stem = withoutExtension(*originalName);
    return stem.empty() ? *originalName : std::string(stem);
  }
  std::string extension(pathExtension(filename));
  if (extension.empty()) return "文件";
  std::ranges::transform(extension, extension.begin(), [](char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  });
  return extension + " 文件";
}

std::string AttachmentNamingKit::suggestedDownloadName(std::string_view filename,
                                                       std::string_view title) {
  std::string name(title);
  for (const std::string_view unfit : {"：", "/", ":"}) name = replacingAll(name, unfit, "-");
  if (name.empty()) return std::string(filename);
  const std::string_view extension = pathExtension(filename);
  return extension.empty() ? name : fmt::format("{}.{}", name, extension);
}

std::optional<std::string> AttachmentNamingKit::fileSizeLabel(const std::filesystem::path& file) {
  std::error_code failed;
  const std::uintmax_t size = std::filesystem::file_size(file, failed);
  if (failed) return std::nullopt;
  return byteCountLabel(size);
}

std::string AttachmentNamingKit::byteCountLabel(std::uint64_t bytes) {
  if (bytes < 1000) return fmt::format("{} 字节", bytes);
  constexpr std::array units{"KB", "MB", "GB", "TB", "PB", "EB"};
  double value = static_cast<double>(bytes) / 1000;
  std::size_t unit = 0;
  // 999.95 would print as 1000.0.
  while (value >= 999.95 && unit + 1 < units.size()) {
    value /= 1000;
    ++unit;
  }
  return fmt::format("{:.1f} {}", value, units[unit]);
}

std::string AttachmentNamingKit::fileIcon(std::string_view filename) {
  return std::string(rowFor(filename).icon);
}

std::string AttachmentNamingKit::typeColorHex(std::string_view filename) {
  return std::string(rowFor(filename).color);
}

std::string AttachmentNamingKit::linkIcon(std::string_view url) {
  url = url.substr(0, url.find_first_of("?#"));
  if (const std::size_t scheme = url.find("://"); scheme != std::string_view::npos) {
    const std::size_t path = url.find('/', scheme + 3);
    if (path == std::string_view::npos) return std::string(unknownType.icon);
    url.remove_prefix(path);
  }
  return fileIcon(url);
}

std::optional<std::string> FileTypeDetector::magicExtension(std::string_view bytes) {
  if (bytes.starts_with("\xFF\xD8\xFF")) return "jpg";
  if (bytes.size() < 12) {
    if (bytes.starts_with("\x89PNG")) return "png";
    if (bytes.starts_with("GIF")) return "gif";
    return std::nullopt;
  }
  if (bytes.starts_with("\x89PNG")) return "png";
  if (bytes.starts_with("GIF8")) return "gif";
  if (bytes.starts_with("RIFF") && bytes.substr(8).starts_with("WEBP")) return "webp";
  if (bytes.substr(4).starts_with("ftyp")) return "m4a";
  if (bytes.starts_with("Ogg")) return "ogg";
  return std::nullopt;
}

}  // namespace nomely
