#include "Core/Markdown/Frontmatter/MemoFileRepair.h"
#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Support/ErrorKind.h"
#include "Support/Matchers.h"

namespace nomely::test {
namespace {

using Kind = ParseError::Kind;
using MemoFrontmatterParser::losesOnRewrite;
using MemoFrontmatterParser::parse;
using MemoFrontmatterParser::serialize;

// Headers as other tools write them, beside what the next write makes of them.
TEST(MemoFrontmatterParserTest, ForeignHeaders) {
  const std::pair<const char*, const char*> cases[] = {
      {"{id: m, tags: [a, 'b']}", "id: m\ntime: 00:00\ntags:\n- a\n- b"},
      {"tags: [a]\ntime: \"08:00\"\nid: m", "id: m\ntime: 08:00\ntags:\n- a"},
      {"title: x\ntime: 08:00\nnested: {a: [1]}\n? [k]\n: v", "time: 08:00"},
      {"audio_transcripts: {b: {text: '', segments: []}}\noriginal_names: {a: I 1.P}\n"
       "attachment_descriptions: {a: '海: 边'}\nattachments: [b, a]\nlock_on_top: true\n"
       "pinned: true\nmood: -3\ntags: [x/y, '12:30']\ntime: 09:30\nsource_id: '42'\nsource: flomo\n"
       "updated_at: '2026-03-01T09:30:05+08:00'\ncreated_at: c\nid: m\nschema_version: 2",
       "schema_version: 2\nid: m\ncreated_at: c\nupdated_at: '2026-03-01T09:30:05+08:00'\n"
       "source: flomo\nsource_id: '42'\ntime: 09:30\ntags:\n- x/y\n- '12:30'\nmood: -3\n"
       "pinned: true\nlock_on_top: true\nattachments:\n- b\n- a\nattachment_descriptions:\n"
       "  a: '海: 边'\noriginal_names:\n  a: I 1.P\naudio_transcripts:\n  b:\n    text: ''\n"
       "    segments: []"},
      {"time: ''\npinned: false\nlock_on_top: no\ntags: []\nattachments: []\n"
       "attachment_descriptions: {}\noriginal_names: {}\naudio_transcripts: {}",
       "time: ''"},
      {"schema_version: ~\nid:\ncreated_at: null\ntime: Null\ntags:\nmood: ~\npinned:\n"
       "attachments: null\noriginal_names: ~\naudio_transcripts:",
       "time: 00:00"},
      {"id: 'null'\ntime: '~'", "id: 'null'\ntime: '~'"},
      {"id: 42\ntime: 12:30\ncreated_at: 2026-03-01\ntags: [1, yes]",
       "id: '42'\ncreated_at: '2026-03-01'\ntime: '12:30'\ntags:\n- '1'\n- 'yes'"},
      {"schema_version: 0x2\nmood: \"+1_0\"\npinned: ON\nlock_on_top: 'yes'\ntime: a",
       "schema_version: 2\ntime: a\nmood: 10\npinned: true\nlock_on_top: true"},
      {"base: &b {time: 08:00, id: m}\n<<: *b\nid: own\ntags: &t [x]\nattachments: *t",
       "id: own\ntime: 08:00\ntags:\n- x\nattachments:\n- x"},
      {"<<: [{id: a}, {id: b, time: t}]", "id: a\ntime: t"},
      {"id: &k time\ntags: [&n a, *n, &n b, *n, a\\tb, it''s, !!str 1]\n*k : t",
       "id: time\ntime: t\ntags:\n- a\n- a\n- b\n- b\n- a\\tb\n- it''s\n- '1'"},
      {"id: \"a\\tb\\u65e5\"\ntime: 'it''s'", "id: \"a\\tb日\"\ntime: it's"},
      {"time: t\noriginal_names: {'<<': o}", "time: t\noriginal_names:\n  '<<': o"},
      {"# c\n\ntime: 08:00 # d\n\n", "time: 08:00"},
      {"time: 08:00\r\ntags:\r\n- a\r", "time: 08:00\ntags:\n- a"},
      {"time: t\nattachment_descriptions:\n  a.png: |\n    x\n    y\n",
       "time: t\nattachment_descriptions:\n  a.png: 'x\n\n    y\n\n    '"},
      {"time: t\naudio_transcripts: {a: {segments: [{duration: 2, start: 1:30.5, text: s, x: y}], "
       "text: t}}",
       "time: t\naudio_transcripts:\n  a:\n    text: t\n    segments:\n    - text: s\n"
       "      start: 90.5\n      duration: 2.0"},
  };
  for (const auto& [header, expected] : cases) {
    SCOPED_TRACE(header);
    const auto read = parse(std::string("---\n") + header + "\n---\nbody");
    EXPECT_EQ(serialize(read.frontmatter, read.body),
              std::string("---\n") + expected + "\n---\n\nbody");
  }
}

TEST(MemoFrontmatterParserTest, FencesAndBodies) {
  for (const auto& [content, body] :
       {std::pair("---\ntime: t\n---\n\n \t\n\u3000\n  text", "  text"),
        {"---\ntime: t\n---\n\n\r\ntext", "\r\ntext"},
        {"---\ntime: t\n---\nbody\n\n", "body\n\n"},
        {"  ---\t\ntime: t\n\u3000---  \nbody", "body"},
        {"---\ntime: t\n---\n\na\n---\nb: c\n---\n", "a\n---\nb: c\n---\n"},
        {"---\ntime: t\n---\n\n\n  ", ""},
        {"---\ntime: t\n---", ""},
        {"---\ntime: t\n----: x\n---\n", ""},
        {"---\ntime: t\n---\n\u2028\nbody", "\u2028\nbody"}}) {
    SCOPED_TRACE(content);
    EXPECT_EQ(parse(content).frontmatter.time, "t");
    EXPECT_EQ(parse(content).body, body);
  }
}

// Files that are no memos, and what their owner is told.
TEST(MemoFrontmatterParserTest, UnreadableFiles) {
  const std::tuple<Kind, const char*, const char*> cases[] = {
      {Kind::missingFrontmatter, "", "文件是空的"},
      {Kind::missingFrontmatter, "\n", "文件是空的"},
      {Kind::missingFrontmatter, "hello\n---\ntime: t\n---\n",
       "没有文件头（第一行应当是 ---），请运行 nomely doctor --fix"},
      {Kind::missingFrontmatter, "\n---\ntime: t\n---\n", "没有文件头"},
      {Kind::missingFrontmatter, "---\r\ntime: t\r\n---\r\n",
       "换行是 CRLF 而不是 LF，读不出文件头，请运行 nomely doctor --fix"},
      {Kind::missingFrontmatter, "---\rtime: t\r---\r", "换行是 CR 而不是 LF"},
      {Kind::missingFrontmatter, "\uFEFF---\ntime: t\n---\n", "文件开头有 BOM 标记，读不出"},
      {Kind::missingFrontmatter, "\uFEFF---\r\ntime: t\r\n---\r\n",
       "文件开头有 BOM 标记，换行是 CRLF"},
      {Kind::missingFrontmatter, "---\r\nmood: x\r\n---\r\n",
       "第 2 行：mood 应当是整数，请改正；改好后再运行"},
      {Kind::missingFrontmatter, "---\r\ntime: t\r\n", "文件头没有结束"},
      {Kind::unclosedFrontmatter, "---\ntime: t\n", "文件头没有结束"},
      {Kind::unclosedFrontmatter, "---", "文件头没有结束"},
      {Kind::unclosedFrontmatter, "---\ntime: t\n---\r\nbody", "换行是 CRLF"},
  };
  for (const auto& [kind, content, advice] : cases) {
    SCOPED_TRACE(content);
    const auto read = [text = content] { (void)parse(text); };
    EXPECT_EQ(kindOf<ParseError>(read), kind);
    EXPECT_THAT(messageOf<ParseError>(read), HasSubstr(advice));
  }
}

TEST(MemoFrontmatterParserTest, UnreadableHeaders) {
  const std::pair<const char*, const char*> cases[] = {
      {"", "里面什么都没有"},
      {"# c\n", "里面什么都没有"},
      {"- a\n", "文件头 应当是“名字: 值”的各行"},
      {"time: t\nmood: abc\n", "文件头有误，第 3 行：mood 应当是整数"},
      {"mood: 1.5\n", "mood 应当是整数"},
      {"schema_version: 9223372036854775808\n", "schema_version 应当是整数"},
      {"pinned: 1\n", "第 2 行：pinned 应当是 true 或 false"},
      {"id: [a]\n", "id 应当是一段文字"},
      {"tags: a\n", "tags 应当是列表"},
      {"original_names: [a]\n", "original_names 应当是“名字: 值”"},
      {"id: a\nid: b\n", "第 3 行：id 出现了两次"},
      {"original_names: {a: b, a: c}\n", "a 出现了两次"},
      {"audio_transcripts: {a: {text: t}}\n", "有 text 和 segments 的转写"},
      {"audio_transcripts: {a: {segments: []}}\n", "有 text 和 segments 的转写"},
      {"audio_transcripts: {a: {text: t, segments: [{text: s, start: 1}]}}\n", "duration 的各段"},
      {"audio_transcripts: {a: {text: t, segments: [{start: x}]}}\n", "start 应当是数字"},
      {"<<: a\n", "<< 应当是"},
      {"id: \"a\ntime: b\n", "第 2 行：引号没有闭合"},
      {"id: \"a\n---\nb\"\n", "第 2 行：引号没有闭合"},
      {"time: t\ntags: [a\nid: b\n", "第 3 行：方括号没有闭合"},
      {"tags:\n\t- a\n", "第 3 行：值以制表符"},
      {"id: a: b\n", "第 2 行：冒号的位置不对"},
      {"time: t\n  id: b\n", "第 3 行：冒号的位置不对"},
      {"time: t\nid\n", "第 3 行：键的后面缺少冒号"},
      {"time: t\nid: \x01\n", "第 3 行：有看不见的控制字符"},
      {"id: *n\n", "第 2 行：以 * 引用的名字"},
      {"time: t\n--- {id: b}\n", "有不止一份 YAML"},
  };
  for (const auto& [header, advice] : cases) {
    SCOPED_TRACE(header);
    const auto read = [text = header] { (void)parse(std::string("---\n") + text + "---\n"); };
    EXPECT_EQ(kindOf<ParseError>(read), Kind::yamlDecode);
    EXPECT_THAT(messageOf<ParseError>(read), HasSubstr(advice));
  }
}

TEST(MemoFrontmatterParserTest, LossOnRewriting) {
  const std::pair<const char*, bool> cases[] = {
      {"{time: t, tags: [a#b, 'c # d', \"e # f\"]}", false},
      {"time: t\nattachment_descriptions:\n  a: |\n    # x\n  b: >-\n    y # z\n", false},
      {"time: 'a\n\n  # b'\nmood: ~", false},
      {"title: x\ntime: t", true},
      {"time: t\n? [k]\n: v", true},
      {"time: t # c", true},
      {"tags: # c\n- a", true},
      {"tags: [a, # c\n b]", true},
      {"time: t\n# c", true},
      {"time: 'a' # c", true},
      {"original_names:\n  a: | # c\n    x\n", true},
      {"original_names:\n  a: |\n    x\n # c\n", true},
      {"tags: &t [a]\nattachments: *t", true},
      {"<<: {id: a}\nid: b", true},
      {"original_names: {<<: {a: b}}", true},
      {"time: !x t", true},
      {"audio_transcripts: {a: {text: t, segments: [], lang: zh}}", true},
      {"audio_transcripts: {a: {text: t, text: u, segments: []}}", true},
      {"audio_transcripts: {a: {text: t, segments: [{text: s, start: 1, duration: 1, x: 1}]}}",
       true},
      {"mood: x # unreadable", false},
  };
  for (const auto& [header, loses] : cases)
    EXPECT_EQ(losesOnRewrite(std::string("---\n") + header + "\n---\n# heading\n"), loses)
        << header;
}

TEST(MemoFileRepairTest, Mends) {
  const struct {
    const char* content;
    const char* mended;  // null: none
    std::vector<std::string> mends;
  } cases[] = {
      {"---\ntime: t\n---\n\na\r\n", nullptr, {}},
      {"\uFEFF---\ntime: t\n---\na\rb", "---\ntime: t\n---\na\rb", {"去掉 BOM 标记"}},
      {"---\r\ntime: t\r\n---\r\n\r\na\rb\r\n", "---\ntime: t\n---\n\na\rb\n", {"换行 CRLF → LF"}},
      {"---\rtime: t\r---\ra", "---\ntime: t\n---\na", {"换行 CR → LF"}},
      {"\uFEFF---\r\ntime: t\r\n---\r\n",
       "---\ntime: t\n---\n",
       {"去掉 BOM 标记", "换行 CRLF → LF"}},
      {"\n \n---\ntime: t\n---\na", "---\ntime: t\n---\na", {"去掉文件头之上的空行"}},
      {"# 标题\n文", "---\ntime: '12:30'\n---\n\n# 标题\n文", {"补上文件头"}},
      {"文\r\n字", "---\ntime: '12:30'\n---\n\n文\n字", {"换行 CRLF → LF", "补上文件头"}},
      {"---\ntime: t\n", nullptr, {}},
      {"---\r\nmood: x\r\n---\r\n", nullptr, {}},
      {"---\nmood: x\n---\n", nullptr, {}},
      {"", nullptr, {}},
      {"\r\n", nullptr, {}},
      {"a\xFF", nullptr, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.content);
    const auto file = MemoFileRepair::mended(c.content, "12:30");
    ASSERT_EQ(file.has_value(), c.mended != nullptr);
    if (!file) continue;
    EXPECT_EQ(file->content, c.mended);
    EXPECT_EQ(file->mends, c.mends);
    EXPECT_NO_THROW((void)parse(file->content));
  }
}

}  // namespace
}  // namespace nomely::test
