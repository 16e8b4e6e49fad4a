#pragma once

#include <memory>
#include <string>
#include <vector>

#include "CLI/Session.h"
#include "CLI/Syntax.h"

namespace nomely {

// One command of the program: declares its arguments, then runs on what the parser put into them.
class Command {
 public:
  virtual ~Command() = default;
  // Called once, before parsing; `syntax` is the command's own.
  virtual void declare(Syntax& syntax) = 0;
  // Throws Error for whatever the user should read.
  virtual void run(Session& session) = 0;
};

struct CommandEntry {
  std::string name;
  std::string summary;
  std::unique_ptr<Command> command;
};

// In the order in which help shows them.
[[nodiscard]] std::vector<CommandEntry> allCommands();

[[nodiscard]] std::unique_ptr<Command> makeAddCommand();
[[nodiscard]] std::unique_ptr<Command> makeListCommand();
[[nodiscard]] std::unique_ptr<Command> makeShowCommand();
[[nodiscard]] std::unique_ptr<Command> makeAppendCommand();
[[nodiscard]] std::unique_ptr<Command> makeOpenCommand();
[[nodiscard]] std::unique_ptr<Command> makeEditCommand();
[[nodiscard]] std::unique_ptr<Command> makeSetCommand();
[[nodiscard]] std::unique_ptr<Command> makeMoveCommand();
[[nodiscard]] std::unique_ptr<Command> makeAttachCommand();
[[nodiscard]] std::unique_ptr<Command> makeDetachCommand();
[[nodiscard]] std::unique_ptr<Command> makeRemoveCommand();
[[nodiscard]] std::unique_ptr<Command> makeTrashCommand();
[[nodiscard]] std::unique_ptr<Command> makeHistoryCommand();
[[nodiscard]] std::unique_ptr<Command> makeSearchCommand();
[[nodiscard]] std::unique_ptr<Command> makeRenderCommand();
[[nodiscard]] std::unique_ptr<Command> makeTagsCommand();
[[nodiscard]] std::unique_ptr<Command> makeMonthCommand();
[[nodiscard]] std::unique_ptr<Command> makePasteCommand();
[[nodiscard]] std::unique_ptr<Command> makeImportCommand();
[[nodiscard]] std::unique_ptr<Command> makeExportCommand();
[[nodiscard]] std::unique_ptr<Command> makeBackupCommand();
[[nodiscard]] std::unique_ptr<Command> makeSyncCommand();
[[nodiscard]] std::unique_ptr<Command> makeAiCommand();
[[nodiscard]] std::unique_ptr<Command> makeSummaryCommand();
[[nodiscard]] std::unique_ptr<Command> makeSpeakCommand();
[[nodiscard]] std::unique_ptr<Command> makeConfigCommand();
[[nodiscard]] std::unique_ptr<Command> makeSecretCommand();
[[nodiscard]] std::unique_ptr<Command> makeRecordCommand();
[[nodiscard]] std::unique_ptr<Command> makeTranscribeCommand();
[[nodiscard]] std::unique_ptr<Command> makeBotCommand();
[[nodiscard]] std::unique_ptr<Command> makeRunCommand();
[[nodiscard]] std::unique_ptr<Command> makeDoctorCommand();
[[nodiscard]] std::unique_ptr<Command> makeCompletionCommand();
[[nodiscard]] std::unique_ptr<Command> makeManualCommand();

// What the program does when no command is given.
void showToday(Session& session);

}  // namespace nomely
