#pragma once

#include <string>
#include <vector>

#include "CLI/Command.h"
#include "CLI/Session.h"
#include "CLI/Syntax.h"

namespace nomely {

// The program's command line: global options, which may stand anywhere, and its commands.
class Parser {
 public:
  // The options write into the session.
  explicit Parser(Session& session);
  Parser(const Parser&) = delete;
  Parser& operator=(const Parser&) = delete;

  // What the user asked for.
  struct Request {
    Command* command = nullptr;  // null: none was named
    std::string help;            // not empty: only this text is wanted
  };
  // Throws UsageError.
  [[nodiscard]] Request parse(const std::vector<std::string>& words);

  // Everything that is declared, for completion and the manual.
  [[nodiscard]] const Syntax& syntax() const { return program_; }

 private:
  void declareGlobalOptions();
  void declareCommands();
  // Of the command and its action that are named; of the program without names.
  [[nodiscard]] std::string help(const std::vector<std::string>& names) const;
  [[nodiscard]] std::string helpOfChosen() const;

  Session& session_;
  Syntax program_;
  std::vector<CommandEntry> commands_;
  std::vector<std::string> helpNames_;
};

}  // namespace nomely
