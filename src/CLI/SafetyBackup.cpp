#include "CLI/SafetyBackup.h"

#include "CLI/Progress.h"

namespace nomely {

void SafetyBackup::declare(Syntax& syntax) {
  syntax.add({.name = "--no-backup",
              .help = "事先不做自动备份，用于磁盘已满等备份不了的时候",
              .target = &isLeftOut_});
}

void SafetyBackup::make(Session& session, const RiskyOperation& operation) const {
  if (isLeftOut_) return;
  try {
    session.host([&](const std::stop_token& stop) {
      Progress progress(session, "备份");
      session.application().backupBeforeRiskyOperation(
          operation, {.stop = stop, .progress = [&](double share) { progress.show(share); }});
    });
  } catch (const ImportSafetyError&) {
    session.say("不做备份也要继续的话，加 --no-backup。");
    throw;
  }
}

}  // namespace nomely
