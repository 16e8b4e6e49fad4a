#include "Core/Lifecycle/Settling/ConflictNames.h"

#include <algorithm>
#include <array>

#include "Core/Extensions/PathNames.h"
#include "Core/Storage/DiskPaths.h"
#include "Platform/Text/Ascii.h"

namespace nomely::ConflictNames {
namespace {

// What is put behind a whole name: by merge tools, by git for a file that stands where a folder is
// to be, and by programs that copy to a cloud.
constexpr std::array<std::string_view, 3> endings{"~", ".orig", ".conflict"};

constexpr std::size_t digitsOfAttachments = 8;

bool isHex(char c) {
  return (c >= '0' && c <= '9') || (loweredAscii(c) >= 'a' && loweredAscii(c) <= 'f');
}

// "003.md~HEAD" → "003.md"
std::string_view withoutEnding(std::string_view name) {
  for (const std::string_view ending : endings)
    if (const std::size_t at = name.find(ending); at != std::string_view::npos && at > 0)
      if (equalsIgnoringAsciiCase(pathExtension(name.substr(0, at)), "md"))
        return name.substr(0, at);
  return name;
}

}  // namespace

bool isCopyOf(std::string_view name, std::string_view base) {
  if (name == base) return false;
  if (name.starts_with(base))
    return std::ranges::any_of(endings, [&](std::string_view ending) {
      return name.substr(base.size()).starts_with(ending);
    });
  const std::string_view stem = withoutExtension(base);
  if (!name.starts_with(stem) || name.size() <= stem.size()) return false;
  if (!equalsIgnoringAsciiCase(pathExtension(name), pathExtension(base))) return false;
  constexpr std::string_view separators = " .(-_~[";
  return separators.find(name[stem.size()]) != std::string_view::npos;
}

std::string attachmentCopied(std::string_view name) {
  const std::string_view digits = name.substr(0, digitsOfAttachments);
  if (digits.size() < digitsOfAttachments || !std::ranges::all_of(digits, isHex)) return {};
  std::string base(digits);
  if (const std::string_view extension = pathExtension(name); !extension.empty())
    base.append(".").append(extension);
  return isCopyOf(name, base) ? base : std::string();
}

bool isStrayNote(std::string_view name) {
  const std::string_view memo = withoutEnding(name);
  if (!equalsIgnoringAsciiCase(pathExtension(memo), "md") || name.starts_with('.')) return false;
  const auto number = DiskPaths::seqNumber(name);
  if (number && *number >= 1 && name == DiskPaths::memoFileName(*number)) return false;
  return memo.size() < digitsOfAttachments ||
         !std::ranges::all_of(memo.substr(0, digitsOfAttachments), isHex);
}

}  // namespace nomely::ConflictNames
