#include <fmt/format.h>

#include "CLI/ActionCommand.h"
#include "CLI/Arguments.h"
#include "CLI/ByteCount.h"
#include "CLI/MemoOutput.h"
#include "CLI/PagedOutput.h"
#include "CLI/Progress.h"
#include "CLI/UsageError.h"
#include "Core/Extensions/DateFormatters.h"
#include "Core/Lifecycle/Backup/BackupNotes.h"
#include "Platform/Files/PrivateFolder.h"

namespace nomely {
namespace {

namespace fs = std::filesystem;

class BackupCommand final : public ActionCommand {
 public:
  void declare(Syntax& syntax) override {
    Syntax& making = addDefault(syntax, "now", "现在做一份备份，并验过它能恢复",
                                [this](Session& session) { make(session); });
    making.add({.name = "--to",
                .help = "放到另一个文件夹，连同历史版本，不会被自动清理",
                .target = &folder_,
                .value = "DIR",
                .kind = WordKind::folder});
    making.add(
        {.name = "--if-needed", .help = "最近 12 小时内有自动备份就不做", .target = &ifNeeded_});
    add(syntax, "list", "列出数据目录里的备份", list);
    add(syntax, "verify", "把一份备份从头到尾验一遍", [this](Session& session) {
      verify(session);
    }).add(fileArgument());
    Syntax& showing = add(syntax, "show", "一份备份里有什么，或其中一条笔记",
                          [this](Session& session) { show(session); });
    showing.add(fileArgument());
    showing.add(noteArgument());
    Syntax& restoring = add(syntax, "restore", "用一份备份替换全部数据，或取回其中一条笔记",
                            [this](Session& session) { restore(session); });
    restoring.add(fileArgument());
    restoring.add(noteArgument());
    restoring.add({.name = "--no-safety-copy",
                   .help = "恢复前不备份现在的数据，用于数据坏得无法备份时",
                   .target = &withoutSafetyCopy_});
    syntax.examples = {"nomely backup", "nomely backup now --to /media/usb",
                       "nomely backup restore @ 2026-03-01/7", "nomely backup restore @"};
  }

 private:
  Argument fileArgument() {
    return {.name = "FILE",
            .help = "备份文件，backup list 里的名称，或 @（最新的一份）",
            .target = &file_,
            .kind = WordKind::backup,
            .isRequired = true};
  }
  Argument noteArgument() {
    return {.name = "REF",
            .help = "备份里的一条笔记：日期/编号或标识",
            .target = &note_,
            .kind = WordKind::text};
  }

  void make(Session& session) const;
  static void list(Session& session);
  void verify(Session& session) const;
  void show(Session& session) const;
  void restore(Session& session) const;
  void restoreAll(Session& session, const fs::path& file) const;
  void restoreNote(Session& session, const BackupArchive& archive) const;

  [[nodiscard]] fs::path chosen(Session& session) const;
  [[nodiscard]] TimelineEntry chosenNote(const BackupNotes& notes, const Session& session) const;

  std::string folder_;
  std::string file_;
  std::string note_;
  bool ifNeeded_ = false;
  bool withoutSafetyCopy_ = false;
};

Json jsonOf(const BackupFile& file) {
  return {
      {"name", file.name}, {"date", DateFormatters::utcTimestamp(file.date)}, {"size", file.size}};
}

Json jsonOf(const BackupManifest& manifest) {
  return Json::parse(manifest.json());
}

std::string text(const BackupArchive::Contents& contents) {
  return fmt::format("{} 条笔记，{} 个文件，解开后 {}", contents.notes, contents.files,
                     byteCount(contents.bytes));
}

std::string text(const BackupManifest& manifest) {
  std::string text =
      fmt::format("备份时间：{}\n来源：{}\n版本：{}{}\n",
                  DateFormatters::isoDateTime.format(manifest.createdAt), manifest.sourcePath,
                  manifest.appVersion,
                  manifest.buildNumber.empty() ? "" : fmt::format(" ({})", manifest.buildNumber));
  if (!manifest.unreadableFiles.empty())
    text += fmt::format("其中 {} 个文件在备份时就读不出\n", manifest.unreadableFiles.size());
  return Terminal::printable(text);
}

// Runs what takes long under a progress bar.
template <typename Job>
void hosted(Session& session, const char* label, Job job) {
  session.host([&](const std::stop_token& stop) {
    Progress progress(session, label);
    job(BackupWork{.stop = stop, .progress = [&](double share) { progress.show(share); }});
  });
}

BackupManifest manifestOf(const BackupArchive& archive) {
  try {
    BackupManifest manifest = archive.manifest();
    if (manifest.appName != BackupManifest().appName)
      throw Error("backup.foreign", "所选文件不是 Nomely 备份。");
    return manifest;
  } catch (const BackupError& error) {
    throw Error("backup.unreadable", fmt::format("读取备份信息失败：{}", error.what()));
  }
}

void BackupCommand::make(Session& session) const {
  if (!session.hasRoot()) return session.tellOfMissingRoot();
  if (ifNeeded_ && !folder_.empty()) throw UsageError("--if-needed 不能和 --to 一起用");
  const Application& application = session.application();
  const BackupManager& backups = application.backups();
  if (!folder_.empty() && !session.files().isDirectory(folder_))
    throw NameNotFoundError(fmt::format("没有这个文件夹：{}", folder_));
  std::optional<fs::path> made;
  hosted(session, "备份", [&](const BackupWork& work) {
    if (ifNeeded_) {
      if (application.backupWhenDue(work))
        made = backups.backupsFolder() / backups.newestBackup().value().name;
    } else if (folder_.empty()) {
      made = backups.backup(work);
    } else {
      made = fs::absolute(folder_) / backups.fileName(ArchiveKind::manual);
      backups.createArchive(*made, ArchiveKind::manual, true, work);
    }
  });
  if (!made) return session.say("距上次备份不足 12 小时，跳过");
  const auto attributes = session.files().attributes(*made);
  const std::uint64_t size = attributes ? attributes->size : 0;
  if (session.isJson()) return session.printJson({{"file", made->string()}, {"size", size}});
  session.say(folder_.empty() ? fmt::format("已完成一份新的备份（自动备份保留最近 {} 份）",
                                            backups.maxBackups())
                              : std::string("已完成一份新的备份"));
  session.print(fmt::format("{}  {}\n", Terminal::printable(made->string()), byteCount(size)));
}

void BackupCommand::list(Session& session) {
  session.tellOfMissingRoot();
  const std::vector<BackupFile> files = session.application().backups().listBackups();
  if (session.isJson()) {
    Json json = Json::array();
    for (const BackupFile& file : files) json.push_back(jsonOf(file));
    return session.printJson(json);
  }
  const PagedOutput pager(session);
  for (const BackupFile& file : files)
    session.print(fmt::format("{}  {:>9}  {}\n", DateFormatters::isoDateTime.format(file.date),
                              byteCount(file.size), Terminal::printable(file.name)));
  if (files.empty() && session.hasRoot()) session.say("还没有备份。做一份：nomely backup");
}

fs::path BackupCommand::chosen(Session& session) const {
  session.doWithoutRoot();  // an archive may be what is left of it
  const BackupManager& backups = session.application().backups();
  if (file_ == "@") {
    const auto newest = backups.newestBackup();
    if (!newest) throw NameNotFoundError("还没有备份");
    return backups.backupsFolder() / newest->name;
  }
  const FileManager files = session.files();
  if (files.exists(file_)) return fs::absolute(file_);
  fs::path kept = backups.backupsFolder() / file_;
  if (file_.find('/') == std::string::npos && files.exists(kept)) return kept;
  throw NameNotFoundError(fmt::format("找不到备份文件：{}", file_));
}

void BackupCommand::verify(Session& session) const {
  const fs::path file = chosen(session);
  BackupArchive::Contents contents;
  hosted(session, "检验", [&](const BackupWork& work) {
    contents = session.application().backups().verify(file, work);
  });
  if (session.isJson())
    return session.printJson({{"file", file.string()},
                              {"notes", contents.notes},
                              {"files", contents.files},
                              {"bytes", contents.bytes},
                              {"manifest", jsonOf(contents.manifest)}});
  session.print(fmt::format("备份完好：{}\n", text(contents)));
}

TimelineEntry BackupCommand::chosenNote(const BackupNotes& notes, const Session& session) const {
  return Arguments::memoIn({.read = [&](const MemoPlace& place) { return notes.read(place); },
                            .forEach =
                                [&](const std::function<bool(TimelineEntry)>& visit) {
                                  notes.forEach([&](const MemoPlace& place, Memo memo) {
                                    return visit({place.day, std::move(memo)});
                                  });
                                }},
                           note_, session.clock());
}

void BackupCommand::show(Session& session) const {
  const BackupArchive archive(session.files().fileSystem(), chosen(session));
  const BackupManifest manifest = manifestOf(archive);
  const BackupNotes notes(archive);
  if (!note_.empty()) return MemoOutput::print(chosenNote(notes, session), session);
  Json memos = Json::array();
  const PagedOutput pager(session);
  if (!session.isJson())
    session.print(fmt::format("{}{} 条笔记\n\n", text(manifest), notes.count()));
  const std::size_t unreadable = notes.forEach([&](const MemoPlace& place, const Memo& memo) {
    if (session.isJson())
      memos.push_back(MemoOutput::json({place.day, memo}));
    else
      session.print(MemoOutput::oneLine(fmt::format("{}/{}", place.day.string(), place.seqNumber),
                                        memo.time, memo.body));
    return true;
  });
  if (unreadable > 0) session.say(fmt::format("其中 {} 条读不出。", unreadable));
  if (session.isJson())
    session.printJson({{"manifest", jsonOf(manifest)}, {"memos", std::move(memos)}});
}

void BackupCommand::restore(Session& session) const {
  const fs::path file = chosen(session);
  if (note_.empty()) return restoreAll(session, file);
  if (withoutSafetyCopy_) throw UsageError("--no-safety-copy 只用于恢复全部数据");
  restoreNote(session, BackupArchive(session.files().fileSystem(), file));
}

void BackupCommand::restoreAll(Session& session, const fs::path& file) const {
  const BackupManifest manifest = manifestOf(BackupArchive(session.files().fileSystem(), file));
  session.say(fmt::format("{}\n当前数据将被替换。建议先手动导出一份备份。", text(manifest)));
  if (!session.confirm(withoutSafetyCopy_
                           ? "恢复前不再备份现在的数据，它们会留在旁边的救援文件夹里。继续？"
                           : "继续？"))
    return;
  RestoreResult restored;
  hosted(session, "恢复", [&](const BackupWork& work) {
    restored = session.application().restoreBackup(
        file, withoutSafetyCopy_ ? SafetyCopy::skip : SafetyCopy::make, work);
  });
  if (session.isJson())
    return session.printJson({{"root", session.application().paths().rootURL.string()},
                              {"notes", restored.contents.notes},
                              {"files", restored.contents.files},
                              {"rescue", restored.rescue.string()},
                              {"safetyCopy", restored.safetyCopy.string()}});
  session.print(fmt::format("备份已恢复：{}\n", text(restored.contents)));
  if (!restored.rescue.empty())
    session.say(fmt::format("恢复前的数据保留在 {}，确认无误后可以删除它。",
                            Terminal::printable(restored.rescue.string())));
}

// Nothing of the archive is trusted but this note and what it names.
void BackupCommand::restoreNote(Session& session, const BackupArchive& archive) const {
  (void)manifestOf(archive);
  const BackupNotes notes(archive);
  const TimelineEntry entry = chosenNote(notes, session);
  const bool isNewRoot = !session.hasRoot();
  const PrivateFolder folder(session.environment().temporaryFolder(), "nomely-backup");
  const auto files =
      notes.unpackAttachments(entry.date, entry.memo, folder.path(), session.files());
  const TimelineEntry stored{entry.date,
                             session.memos().receiveCopy(entry.date, entry.memo, files)};
  if (isNewRoot) session.tellOfNewRoot();
  for (const std::string& name : entry.memo.attachments)
    if (!files.contains(name))
      session.say(fmt::format("备份里没有附件 {}。", Terminal::printable(name)));
  MemoOutput::printStored(stored, session);
}

}  // namespace

std::unique_ptr<Command> makeBackupCommand() {
  return std::make_unique<BackupCommand>();
}

}  // namespace nomely
