#include "Platform/Files/TemporaryName.h"

#include <fmt/format.h>

#include "Platform/System/Uuid.h"

namespace nomely::TemporaryName {
namespace {

constexpr std::string_view prefix = ".nomely-";
constexpr std::string_view suffix = ".tmp";

}  // namespace

std::filesystem::path freshIn(const std::filesystem::path& folder) {
  return folder / fmt::format("{}{}{}", prefix, Uuid::random().compact(), suffix);
}

bool matches(std::string_view name) {
  return name.size() > prefix.size() + suffix.size() && name.starts_with(prefix) &&
         name.ends_with(suffix);
}

}  // namespace nomely::TemporaryName
