#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace nomely {

// One key of a settings file and the place of its value in a record: all that reading, writing and
// the `config` command know of a record. A record's fields come from `configFields(record)`, in the
// file's order, and are good as long as the record stays where it is.
struct ConfigField {
  enum class Presence {
    required,   // a file without it is invalid
    defaulted,  // absent, it keeps the record's default
    optional,   // absent in the record, too
  };

  // One of a list of names.
  struct Choice {
    std::span<const std::string_view> names;
    std::function<std::size_t()> index;
    std::function<void(std::size_t)> assign;
    std::function<void(std::size_t)> choose = assign;  // what a user's choice does
  };
  using Map = std::map<std::string, std::string>;
  using Target = std::variant<std::string*, bool*, double*, std::optional<std::string>*,
                              std::optional<std::int64_t>*, Choice, Map*>;

  std::string_view key;  // "features.beautify": beautify in the mapping features
  Target target;
  Presence presence = Presence::required;
  std::string_view account = {};  // where a secret lies in the keychain; the file has it empty
  bool isURL = false;
  // What a user may set a number to.
  double least = std::numeric_limits<double>::lowest();
  double most = std::numeric_limits<double>::max();
  std::string_view whyNot = {};  // why a user can't set it at present, if so

  [[nodiscard]] bool isSecret() const { return !account.empty(); }
  // The text of a secret.
  [[nodiscard]] std::string& secret() const { return *std::get<std::string*>(target); }
};

using ConfigFields = std::vector<ConfigField>;

// The choice of an enumeration whose cases are 0, 1, 2...
template <typename Case>
[[nodiscard]] ConfigField::Choice choiceOf(Case& value, std::span<const std::string_view> names) {
  return {names, [&value] { return static_cast<std::size_t>(value); },
          [&value](std::size_t index) { value = static_cast<Case>(index); }};
}

}  // namespace nomely
