#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace nomely {

// The text of a file by which an engine is told what not to move and how to treat the rest, with
// lines that have to stand in it. What else its user wrote there stays. Pure.
class EngineRules {
 public:
  // For the folder that Syncthing moves; `root` is the data root's path within it, "" where it is
  // that itself.
  [[nodiscard]] static EngineRules syncthingIgnore(const std::filesystem::path& root);
  // For the data root in a git working tree: what isn't committed; that the bytes of what is stay;
  // and, of one clone, how it merges.
  [[nodiscard]] static EngineRules gitIgnore();
  [[nodiscard]] static EngineRules gitAttributes();
  [[nodiscard]] static EngineRules gitSettings();

  // Within the folder that it tells of.
  [[nodiscard]] const std::string& name() const { return name_; }
  // Those that don't stand in `text`.
  [[nodiscard]] std::vector<std::string> missingFrom(std::string_view text) const;
  // `text` with them; the same bytes where none is missing.
  [[nodiscard]] std::string completed(std::string_view text) const;

 private:
  // Of lines that contradict each other, the one that holds for its engine.
  enum class Precedence { first, last };

  EngineRules(std::string name, std::string remark, Precedence precedence,
              std::vector<std::string> lines);

  std::string name_;
  std::string remark_;
  Precedence precedence_;
  std::vector<std::string> lines_;
};

}  // namespace nomely
