#include "Core/Lifecycle/Backup/BackupNames.h"

#include "Core/Extensions/PathNames.h"
#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Storage/MemoFile.h"
#include "Platform/Text/Ascii.h"
#include "Platform/Text/Unicode.h"
#include "Platform/Time/Day.h"

namespace nomely::BackupNames {

bool isSafe(std::string_view name) {
  constexpr std::string_view forbidden("\\\0", 2);
  if (name.find_first_of(forbidden) != std::string_view::npos) return false;
  if (name.size() >= 2 && name[1] == ':' && loweredAscii(name[0]) >= 'a' &&
      loweredAscii(name[0]) <= 'z')
    return false;
  if (name.ends_with('/')) name.remove_suffix(1);
  for (;;) {
    const std::size_t slash = name.find('/');
    const std::string_view component = name.substr(0, slash);
    if (component.empty() || component == "." || component == ".." || component == backups)
      return false;
    if (slash == std::string_view::npos) return true;
    name.remove_prefix(slash + 1);
  }
}

bool isNote(std::string_view name) {
  constexpr std::size_t dayLength = 10;
  if (name.size() <= dayLength + 1 || name[dayLength] != '/') return false;
  const std::string_view file = name.substr(dayLength + 1);
  return file.find('/') == std::string_view::npos && lowerCaseExtension(file) == "md" &&
         Day::parse(name.substr(0, dayLength));
}

bool isReadableNote(std::string_view bytes) {
  if (bytes.size() > MemoFile::maxSize || !isValidUtf8(bytes)) return false;
  try {
    (void)MemoFrontmatterParser::parseHeader(bytes);
    return true;
  } catch (const ParseError&) {
    return false;
  }
}

std::string listed(std::string_view name) {
  return isValidUtf8(name) ? std::string(name) : toUtf8(toUtf16(name));
}

}  // namespace nomely::BackupNames
