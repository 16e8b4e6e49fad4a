#include "Platform/System/Environment.h"

#include <pwd.h>
#include <unistd.h>

namespace nomely {

Environment Environment::current() {
  Variables variables;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string_view text(*entry);
    const std::size_t separator = text.find('=');
    if (separator == std::string_view::npos) continue;
    variables.emplace(text.substr(0, separator), text.substr(separator + 1));
  }
  return Environment(std::move(variables));
}

std::optional<std::string> Environment::get(std::string_view name) const {
  const auto found = variables_.find(name);
  return found == variables_.end() ? std::nullopt : std::optional(found->second);
}

std::filesystem::path Environment::homeFolder() const {
  if (const auto home = get("HOME"); home && !home->empty()) return *home;
  const passwd* entry = ::getpwuid(::getuid());
  return entry != nullptr ? entry->pw_dir : "/";
}

std::filesystem::path Environment::temporaryFolder() const {
  return folder("TMPDIR", "/tmp");
}

std::filesystem::path Environment::configurationFolder() const {
  return folder("XDG_CONFIG_HOME", homeFolder() / ".config") / "nomely";
}

std::filesystem::path Environment::stateFolder() const {
  return folder("XDG_STATE_HOME", homeFolder() / ".local" / "state") / "nomely";
}

std::filesystem::path Environment::folder(std::string_view variable,
                                          const std::filesystem::path& fallback) const {
  // A relative path in one of these variables counts as not set.
  if (const auto value = get(variable); value && std::filesystem::path(*value).is_absolute())
    return *value;
  return fallback;
}

}  // namespace nomely
