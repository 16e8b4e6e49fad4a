#pragma once

#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "CLI/Command.h"
#include "CLI/Session.h"

namespace nomely {

// The program's command line: global options, which may stand anywhere, and one place for each
// command.
class Parser {
 public:
  explicit Parser(Session& session);

  // What the user asked for.
  struct Request {
    Command* command = nullptr;  // null: none was named
    std::string help;            // not empty: only this text is wanted
  };
  // Throws UsageError.
  [[nodiscard]] Request parse(const std::vector<std::string>& arguments);

  // The whole command line with everything declared, for completion and the manual.
  [[nodiscard]] const CLI::App& app() const { return app_; }
  // Whether help, manual and completion tell of the command: it has a description.
  [[nodiscard]] static bool isShown(const CLI::App& command);

 private:
  void declareGlobalOptions();
  void declareCommands();
  // Of the command and its action that are named; of the program without names.
  [[nodiscard]] std::string help(const std::vector<std::string>& names) const;

  Session& session_;
  CLI::App app_;
  std::vector<CommandEntry> commands_;
  std::vector<std::string> helpNames_;
};

}  // namespace nomely
