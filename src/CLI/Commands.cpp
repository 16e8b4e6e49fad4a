#include "CLI/Command.h"

namespace nomely {

std::vector<CommandEntry> allCommands() {
  std::vector<CommandEntry> commands;
  const auto add = [&](const char* name, const char* summary, std::unique_ptr<Command> command) {
    commands.push_back({name, summary, std::move(command)});
  };
  add("add", "新建一条笔记", makeAddCommand());
  add("list", "列出笔记", makeListCommand());
  add("show", "显示笔记", makeShowCommand());
  add("append", "在正文末尾加一段", makeAppendCommand());
  add("edit", "修改正文，并留下历史版本", makeEditCommand());
  add("set", "修改时间、心情、标签、置顶或附件说明", makeSetCommand());
  add("move", "把笔记移到另一天", makeMoveCommand());
  add("attach", "给笔记加附件", makeAttachCommand());
  add("detach", "从笔记取下附件", makeDetachCommand());
  add("open", "用桌面程序打开附件", makeOpenCommand());
  add("rm", "把笔记移入回收站", makeRemoveCommand());
  add("trash", "列出、恢复或清空回收站", makeTrashCommand());
  add("history", "列出、显示或恢复一条笔记的历史版本", makeHistoryCommand());
  add("search", "全文搜索", makeSearchCommand());
  add("render", "把 Markdown 画在终端上，或列出各块", makeRenderCommand());
  add("tags", "列出、改名、合并或删除标签，给标签颜色和表情", makeTagsCommand());
  add("month", "一个月的概览：每天的疏密、线索和可疑之处", makeMonthCommand());
  add("paste", "把剪贴板的 HTML 或 RTF 转成 Markdown", makePasteCommand());
  add("import", "从 flomo 导入，或撤销导入", makeImportCommand());
  add("export", "导出为网页或 Markdown 文档", makeExportCommand());
  add("backup", "备份：新做、列出、检验、查看、恢复", makeBackupCommand());
  add("sync", "两台电脑一本日记：由什么同步，写好忽略文件", makeSyncCommand());
  add("ai", "用 AI 整理、润色、翻译一段文字", makeAiCommand());
  add("summary", "用 AI 写一个月或一年的总结，存为笔记", makeSummaryCommand());
  add("speak", "朗读笔记或文字，存成声音文件", makeSpeakCommand());
  add("config", "列出和修改设置", makeConfigCommand());
  add("secret", "存入或删除密钥", makeSecretCommand());
  add("record", "录一段音，存成笔记并转成文字", makeRecordCommand());
  add("transcribe", "把录音转成文字", makeTranscribeCommand());
  add("bot", "聊天机器人：情况、绑定、测试、往来记录", makeBotCommand());
  add("run", "留在前台运行：聊天机器人和后台维护，Ctrl-C 结束", makeRunCommand());
  add("doctor", "检查全部数据，不作改动", makeDoctorCommand());
  add("completion", "输出 shell 补全脚本", makeCompletionCommand());
  add("manual", "", makeManualCommand());  // for the build, which makes the manual page of it
  return commands;
}

}  // namespace nomely
