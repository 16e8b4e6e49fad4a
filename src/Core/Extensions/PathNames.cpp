#include "Core/Extensions/PathNames.h"

#include "Platform/Text/Ascii.h"

namespace nomely {

std::string_view lastComponent(std::string_view path) {
  while (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
  return path.substr(path.rfind('/') + 1);
}

std::string_view pathExtension(std::string_view name) {
  name = lastComponent(name);
  const std::size_t dot = name.rfind('.');
  return dot == std::string_view::npos || dot == 0 ? std::string_view() : name.substr(dot + 1);
}

std::string_view withoutExtension(std::string_view name) {
  const std::string_view extension = pathExtension(name);
  if (!extension.empty()) name.remove_suffix(extension.size() + 1);
  return name;
}

std::string lowerCaseExtension(std::string_view name) {
  return loweredAscii(pathExtension(name));
}

}  // namespace nomely
