#include <set>

#include <fmt/format.h>

#include "Core/Lifecycle/Maintenance/StartupMaintenance.h"
#include "Core/Lifecycle/Settling/RootSettling.h"
#include "Core/Storage/ConfigYaml.h"
#include "Core/Storage/DerivedIdentity.h"
#include "Core/Storage/DraftCoding.h"
#include "Core/Storage/TagConfig.h"
#include "Support/MemoryFileSystem.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

using testing::HasSubstr;

// Two machines with one root each, whose clocks differ.
class SidesTest : public StoreTest {
 protected:
  SidesTest() { laterClock.advance(std::chrono::minutes(7)); }

  void putBoth(const Tree& tree) {
    for (const TemporaryFolder* root : {&folder, &otherFolder}) {
      for (const auto& entry : fs::directory_iterator(root->path())) fs::remove_all(entry);
      writeTree(root->path(), tree);
    }
  }
  // How many files were settled.
  static std::size_t settle(const StoreContext& root) {
    const MemoService service(root);
    const SettlingResult result = RootSettling(service).run({});
    EXPECT_EQ(result.told.size(), result.notes + result.others);
    return result.told.size();
  }
  static StartupMaintenance::Result pass(const StoreContext& root) {
    const TemporaryFolder state(quickParent());
    UserDefaults defaults(state.path(), root.files);
    const MemoService service(root);
    return StartupMaintenance(service, defaults, {}).run({});
  }

  TemporaryFolder otherFolder{quickParent()};
  ManualClock laterClock;
  StoreContext other{{otherFolder.path()}, FileManager(posixFileSystem()), laterClock};
};

std::string tags(ConfigField::Map colors) {
  TagConfig config{.colors = std::move(colors)};
  return ConfigYaml::encode(configFields(config));
}
Tree::value_type aside(const std::string& file, const std::string& content) {
  return {file + ".other-" + DerivedIdentity::contentMark(content), content};
}
std::string logged(int seconds) {
  return fmt::format("{{\"id\": \"{0}\", \"timestamp\": {0}.5}}\n", seconds);
}
Moment at(int minute) {
  return DateFormatters::isoDateTime.parse(fmt::format("2026-03-01 09:{:02}:00", minute)).value();
}
std::string quick(const std::string& text, int minute) {
  return DraftCoding::encoded(QuickInputDraft{
      .text = text,
      .pendingAttachmentDates = {{"0000000a.png", Day::parse("2026-03-02").value()},
                                 {"0000000b.png", Day::parse("2026-03-02").value()}},
      .pendingAttachments = {"0000000a.png", "0000000b.png", "0000000c.png"},
      .selectedDate = Day::parse("2026-03-01").value(),
      .updatedAt = at(minute)});
}
std::string focus(const std::string& text, const char* memoId = "m") {
  FocusMemoDraft draft{.bodyText = text, .attachments = {"0000000d.png"}, .updatedAt = at(5)};
  if (*memoId != '\0') draft.memoId = memoId;
  return DraftCoding::encoded(draft);
}

// "history/*.md" for a version of the note m, "new/*.md" for one of a note that was made.
std::string shown(std::string path) {
  constexpr std::string_view histories = ".versions/by-id/";
  if (!path.starts_with(histories)) return path;
  path.erase(0, histories.size());
  const fs::path file(path.substr(path.find('/') + 1));
  return (path.starts_with("6d/") ? "history/" : "new/") +
         (file.has_parent_path() ? file.string() : "*" + file.extension().string());
}

struct Case {
  const char* name;
  Tree kept;
  Tree before;
  Tree after;  // parts of contents
  std::size_t told = 1;
};

TEST_F(SidesTest, BothMachinesComeToTheSameBytes) {
  const std::string red = tags({{"工作", "#F00"}});
  const std::string green = tags({{"生活", "#0F0"}});
  const std::string both = tags({{"工作", "#F00"}, {"生活", "#0F0"}});
  const std::string blue = tags({{"工作", "#00F"}, {"生活", "#0F0"}});
  const std::string remark = "# 我的\n" + red;
  const std::string engine = ".sync-conflict-20261121-101530-ABCDEFG";
  const std::string looks = "_config/tags.yaml";
  const std::string ai = "_config/ai-config.yaml";
  const std::string log = ".meta/feishu-log";
  const std::string message = ".meta/feishu-inbox/om_1";
  const std::string input = ".drafts/quick-input";
  const std::string mine = ".drafts/focus-id-6d";
  const std::string nameless = ".drafts/focus-2026-03-02-001";
  const std::string note = "---\nid: m\ntime: 08:00\n---\n\n原文";
  const std::string id1 = R"({"messageId": "1"})";
  const Case cases[] = {
      {"equal", {{looks, red}}, {{"_config/tags (1).yaml", red}}, {}},
      {"tags", {}, {{looks, red}, {looks + "~HEAD", green}}, {{looks, both}}},
      {"a tag of both",
       {},
       {{looks, red}, {"_config/tags" + engine + ".yaml", blue}},
       {{looks, both}, aside(looks, blue)}},
      {"a remark",
       {},
       {{looks, remark}, {"_config/tags 2.yaml", green}},
       {{looks, both}, aside(looks, remark)}},
      {"damage", {{looks, "["}}, {{"_config/tags 2.yaml", green}}, {aside(looks, green)}},
      {"others", {{ai, "a: 1"}}, {{"_config/ai-config-PC.yaml", "a: 2"}}, {aside(ai, "a: 2")}},
      {"git's markers",
       {},
       {{ai, "<<<<<<< HEAD\na: 1\n=======\na: 2\n>>>>>>> x\n"}},
       {{ai, "a: 2\n"}, aside(ai, "a: 1\n")}},
      {"no second forms",
       {{looks, red},
        {"_config/tags-x.yaml", ""},
        {"_config/b 2.yaml", ""},
        {mine + ".json", ""},
        {looks + ".corrupt-1", ""},
        {message + ".json", id1},
        {message + "-2.json", "{}"}},
       {},
       {},
       0},
      {"the log",
       {},
       {{log + ".jsonl", logged(1) + logged(30) + "{torn"},
        {log + engine + ".jsonl", logged(2) + logged(30)}},
       {{log + ".jsonl", logged(1) + logged(2) + logged(30)}}},
      {"a log alone", {}, {{log + " (1).jsonl", logged(2)}}, {{log + ".jsonl", logged(2)}}},
      {"markers",
       {{".meta/madeHere", ""}},
       {{".meta/madeHere" + engine, ""}, {".meta/nomely 2.lastMigratedSchemaVersion", "2\n"}},
       {},
       2},
      {"a message",
       {{message + ".json", id1}},
       {{message + " (1).json", id1 + " "}},
       {{".meta/feishu-inbox/aside/om_1 (1).json", id1}}},
      {"typed on both",
       {{input + ".json", quick("甲", 2)}, {"2026-03-02/0000000a.png", "a"}},
       {{input + " (1).json", quick("乙 #标", 1)}},
       {{"2026-03-01/0000000a.png", "a"},
        {"2026-03-01/001.md",
         "updated_at: '2026-03-01T09:01:00+08:00'\nsource: nomely\ntime: 09:01\ntags:\n- 草稿\n"
         "- 标\nattachments:\n- 0000000a.png\n- 0000000c.png\n---\n\n乙 #标"},
        {"new/*.original", "0000000b.png"}}},
      {"alike", {{input + ".json", quick("甲", 2)}}, {{input + " (1).json", quick("甲", 1)}}, {}},
      {"a damaged draft",
       {{input + ".json", quick("甲", 2)}},
       {{input + " (1).json", "{"}},
       {{input + ".json.corrupt-" + DerivedIdentity::contentMark("{"), "{"}}},
      {"a note's draft",
       {{mine + ".json", focus("一")},
        {"2026-03-01/001.md", note},
        {"2026-03-01/0000000d.png", "d"}},
       {{mine + engine + ".json", focus("二")}},
       {{"history/attachments/0000000d.png", "d"},
        {"history/*.md",
         "updated_at: '2026-03-01T01:05:00Z'\ntime: 08:00\nattachments:\n"
         "- 0000000d.png\n---\n\n二"}}},
      {"a trashed note's",
       {{mine + ".json", focus("一")}, {".trash/2026-03-01_001/memo.md", note}},
       {{mine + " 2.json", focus("二")}},
       {{"history/*.md", "二"}}},
      {"of a note that is gone",
       {{mine + ".json", focus("一")}},
       {{mine + " 2.json", focus("二")}},
       {{"2026-03-01/001.md", "二"}, {"new/*.original", "二"}}},
      {"of a note without identity",
       {{nameless + ".json", focus("一", "")}, {"2026-03-02/001.md", "---\ntime: 08:00\n---\n"}},
       {{nameless + "-PC.json", focus("二", "")}},
       {{"2026-03-02/002.md", "二"}, {"new/*.original", "二"}}},
      {"saved meanwhile",
       {{mine + ".json", focus("一")},
        {"2026-03-01/001.md", "---\nid: m\ntime: 08:00\nattachments: [0000000d.png]\n---\n\n二"}},
       {{mine + " 2.json", focus("二")}},
       {}},
  };
  for (const auto& [name, kept, before, after, told] : cases) {
    SCOPED_TRACE(name);
    const auto with = [&kept](Tree tree) {
      tree.insert(kept.begin(), kept.end());
      return tree;
    };
    putBoth(with(before));
    EXPECT_EQ(settle(context), told);
    EXPECT_EQ(settle(other), told);
    const Tree tree = treeOn(folder.path());
    EXPECT_EQ(tree, treeOn(otherFolder.path()));
    EXPECT_EQ(settle(context), 0U);
    EXPECT_EQ(tree, treeOn(folder.path()));
    Tree missing = with(after);
    for (const auto& [path, bytes] : tree) {
      if (path.ends_with('/')) continue;
      const auto expected = missing.extract(shown(path));
      ASSERT_TRUE(expected) << path;
      EXPECT_THAT(bytes, HasSubstr(expected.mapped())) << path;
    }
    EXPECT_THAT(missing, testing::IsEmpty());
  }
}

TEST_F(SidesTest, WhatAMachineMakesIsOneNoteOnBoth) {
  const std::string nameless = "---\ntime: 08:00\n---\n\n同样";
  const fs::path lost = "2026-03-02/lost.m4a";
  putBoth({{"2026-03-01/001.md", nameless},
           {"2026-03-01/002.md", nameless},
           {"2009/03/01.md", "## 08:00\n一\n\n## 09:00\n一\n"},
           {lost, "sound"}});
  for (const TemporaryFolder* root : {&folder, &otherFolder})
    fs::last_write_time(root->path() / lost, fs::file_time_type());
  laterClock.set("2026-03-01 09:30:05");
  // One of them is changed before the other machine's pass gives all an identity.
  const MemoService service(other);
  const Day today = day("2026-03-01");
  const auto edit = [&] {
    return service.edit(today, service.days().memoStore().read(today, 1).value(), "改过");
  };
  const Memo edited = edit();
  EXPECT_EQ(pass(context).restoredAudio, 1U);
  EXPECT_EQ(store.memoStore().read(today, 1)->memoId, edited.memoId);
  EXPECT_TRUE(pass(other).changed);
  std::set<std::string> identities;
  for (const Day each : store.listAllDates())
    for (const Memo& memo : store.listMemos(each)) {
      identities.insert(memo.memoId.value());
      EXPECT_TRUE(memo.memoId == edited.memoId ||
                  memo == service.days().memoStore().read(each, memo.seqNumber));
    }
  EXPECT_EQ(identities.size(), 5U);

  // The same bytes once more are another note, wherever the first one is by now.
  (void)service.move(today, service.days().memoStore().read(today, 1).value(), day("2026-03-05"));
  writeFile(otherFolder.path() / "2026-03-01/001.md", nameless);
  const Memo again = edit();
  (void)service.trash(today, again);
  writeFile(otherFolder.path() / "2026-03-01/001.md", nameless);
  EXPECT_EQ((std::set{edited.memoId, again.memoId, edit().memoId}).size(), 3U);
}

TEST_F(SidesTest, ARecordingThatJustCameMayBeAwaitedByItsMemo) {
  putBoth({{"2026-03-02/lost.m4a", "sound"}});
  for (ManualClock* each : {&clock, &laterClock})
    each->advance(SystemClock().now() - each->now() + std::chrono::hours(1));
  fs::create_directory(folder.path() / ".stfolder");
  EXPECT_EQ(pass(context).restoredAudio, 0U);
  EXPECT_EQ(pass(other).restoredAudio, 1U) << "which nobody synchronises";
  clock.advance(std::chrono::hours(24));
  EXPECT_EQ(pass(context).restoredAudio, 1U);
}

}  // namespace
}  // namespace nomely::test
