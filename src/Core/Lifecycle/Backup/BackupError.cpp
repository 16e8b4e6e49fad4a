#include "Core/Lifecycle/Backup/BackupError.h"

#include <fmt/format.h>

namespace nomely {
namespace {

std::string_view codeOf(BackupError::Kind kind) {
  switch (kind) {
    case BackupError::Kind::snapshotFailed:
      return "backup.snapshotFailed";
    case BackupError::Kind::zipFailed:
      return "backup.zipFailed";
    case BackupError::Kind::verifyFailed:
      return "backup.verifyFailed";
    case BackupError::Kind::restoreFailed:
      return "backup.restoreFailed";
    case BackupError::Kind::manifestNotFound:
      return "backup.manifestNotFound";
  }
  return {};
}

std::string textOf(BackupError::Kind kind, const std::string& reason) {
  return (kind == BackupError::Kind::snapshotFailed ? "备份副本创建失败：" : "恢复失败：") + reason;
}

std::string textOf(BackupError::Kind kind, int status) {
  return fmt::format(
      "{} (exit code: {})",
      kind == BackupError::Kind::zipFailed ? "备份失败" : "备份校验失败，压缩包可能损坏", status);
}

}  // namespace

BackupError::BackupError(Kind kind, const std::string& text, Whole)
    : Error(codeOf(kind), text), kind_(kind) {}

BackupError::BackupError(Kind kind, const std::string& reason)
    : BackupError(kind, textOf(kind, reason), Whole()) {}

BackupError::BackupError(Kind kind, int status)
    : BackupError(kind, textOf(kind, status), Whole()) {}

BackupError BackupError::manifestNotFound() {
  return {Kind::manifestNotFound,
          "ZIP 中未找到 NomelyBackupManifest.json，可能不是 Nomely 备份文件。", Whole()};
}

}  // namespace nomely
