#include "CLI/ManualText.h"

namespace nomely {

std::vector<ManualSection> manualSections() {
  return {
      {.title = "日期（DATE）",
       .text = "大小写均可：",
       .entries = {{"2026-03-01", "某一天。"},
                   {"3-1", "最近一个三月一日，今天也算。"},
                   {"today 今天、yesterday 昨天、前天、tomorrow 明天", "相对今天的日子。"},
                   {"周五、星期五、fri、friday", "最近一个星期五，今天也算。"},
                   {"-3、3天前、\"3 days ago\"", "三天前。"}}},
      {.title = "笔记（REF）",
       .text = "能写一个的地方大多能写几个，用空格分开：",
       .entries = {{"DATE/N", "某一天编号为 N 的笔记，如 2026-03-01/7、today/1、周五/2。"},
                   {"@", "最新的一条。"},
                   {"@N", "第 N 新的一条。"},
                   {"memo_…",
                    "笔记的标识，至少写出 memo_ 之后的 8 个字符，只要对应的笔记是唯一的。笔记移到另"
                    "一天，标识不变。history 还认已坏或已不在的笔记的标识。"}}},
      {.title = "选择（SELECTION）",
       .text = "list、search 和 export 用同样的选项选择笔记，几个条件须同时成立：",
       .entries = {{"--day DATE、--from DATE、--to DATE", "某一天，或一段日子，两端都算在内。"},
                   {"--all", "主时间线上的全部笔记。"},
                   {"--tag TAG", "有此标签或其下级的；给出几次就须都有。"},
                   {"--untagged、--images、--links、--audio、--files、--pinned",
                    "没有标签的，有图片、链接、录音、其他附件的，置顶的。"},
                   {"--on-this-day [DATE]", "往年同月同日的。"},
                   {"-n N、--reverse", "最多几条；倒过来，最早的在前。"}},
       .closing = "什么也不写时，list 和 export 取今天的，search 取全部。"},
      {.title = "正文（TEXT）",
       .text =
           "可以是几个词，用空格连成一行。“-”为标准输入。省略时，在终端上打开编辑器（$VISUAL，"
           "否则 $EDITOR，否则 vi 或 nano），不在终端上则读标准输入。编辑器没有保存就什么也不变；"
           "没能存成笔记的文字留在状态目录里，并说出在哪里。以“-”开头的文字放在 -- 之后。"},
      {.title = "输出",
       .text =
           "数据写到标准输出，消息和进度写到标准错误输出。在终端上，长列表经过 $PAGER。--oneline "
           "每条结果一行：引用、时间、首行，以制表符分开，供 fzf、grep 和脚本使用。会破坏什么的命"
           "令先问一声；不在终端上或有 --no-input 时须加 --yes。"},
      {.title = "JSON",
       .text =
           "有 --json 时，标准输出只有一个 UTF-8 的 JSON 文档，以换行结束。一条笔记是一个对象，几"
           "条是数组，没有结果是空数组或空对象。笔记的字段依次为 date、memoId、schemaVersion、"
           "createdAt、updatedAt、source、sourceId、seqNumber、time、tags、mood、pinned、"
           "lockedOnTop、body、attachments、attachmentDescriptions、originalNames、"
           "audioTranscripts；没有值的可选字段省去。失败时为：",
       .entries = {{"{\"error\": {\"code\": \"…\", \"message\": \"…\"}}",
                    "code 供程序辨认，message 与标准错误输出上的话相同。"}}},
      {.title = "退出状态",
       .entries = {{"0", "完成。"},
                   {"1", "操作失败。"},
                   {"2", "用法不对。"},
                   {"3", "笔记已在别处改动、移走或换成了另一条，没有覆盖它。"},
                   {"4", "没有这个名字的笔记、文件或标签。"},
                   {"130", "被 Ctrl-C 中断；已写下的都是完整的。"}}},
      {.title = "环境变量",
       .entries = {{"NOMELY_ROOT", "数据目录，--root 优先。"},
                   {"VISUAL、EDITOR", "编辑器。"},
                   {"PAGER", "长列表的分页程序，默认 less；空或 cat 为不分页。"},
                   {"LESS、LESSCHARSET", "未设置时为 FRX 和 utf-8。"},
                   {"NO_COLOR", "不空则不用颜色；TERM 为 dumb 时也不用。"},
                   {"TZ", "本地时区。"},
                   {"XDG_STATE_HOME", "状态目录的上级，默认 ~/.local/state。"}}},
      {.title = "文件",
       .entries =
           {{"~/NomelyData/", "数据目录。任何程序都能读，也能备份和同步。"},
            {"2026-03-01/007.md", "其中一条笔记：YAML 头，空一行，Markdown 正文。附件在旁边。"},
            {".trash/", "回收站，和从笔记取下的附件。"},
            {".versions/", "每条笔记的历史版本。"},
            {"_config/", "日记的设置，随数据目录走。"},
            {"$XDG_STATE_HOME/nomely/",
             "属于这台机器的：没能存成笔记的文字（editing），存不进数据目录的草稿（drafts）。"}}},
      {.title = "例子",
       .entries = {{"nomely add 早上跑步五公里 --tag 运动 --mood 4", "写下一条笔记。"},
                   {"nomely list --from 周一", "这一周的笔记。"},
                   {"nomely search 读书 --tag 工作 --oneline | fzf", "从搜索结果里挑一条。"},
                   {"nomely edit @", "在编辑器里改最新的一条。"},
                   {"nomely history @ diff", "它的上一个版本和现在有什么不同。"},
                   {"nomely list --all --json | jq -r '.[].tags[]' | sort | uniq -c",
                    "在脚本里数标签。"},
                   {"source <(nomely completion bash)", "放进 ~/.bashrc，按 Tab 补全。"}}},
  };
}

}  // namespace nomely
