#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace nomely {

// What a process is given at its start: variables and the folders that follow from them. A value,
// so that tests can compose an application in a world of their own.
class Environment {
 public:
  using Variables = std::map<std::string, std::string, std::less<>>;

  explicit Environment(Variables variables) : variables_(std::move(variables)) {}
  // Those of this process, read once.
  [[nodiscard]] static Environment current();

  [[nodiscard]] std::optional<std::string> get(std::string_view name) const;

  // $HOME, else the user's entry in the password database.
  [[nodiscard]] std::filesystem::path homeFolder() const;
  // $TMPDIR, else /tmp.
  [[nodiscard]] std::filesystem::path temporaryFolder() const;
  // $XDG_CONFIG_HOME/nomely and $XDG_STATE_HOME/nomely with the XDG base directories' usual
  // defaults; neither need exist.
  [[nodiscard]] std::filesystem::path configurationFolder() const;
  [[nodiscard]] std::filesystem::path stateFolder() const;

 private:
  [[nodiscard]] std::filesystem::path folder(std::string_view variable,
                                             const std::filesystem::path& fallback) const;

  Variables variables_;
};

}  // namespace nomely
