#include "Core/Lifecycle/Settling/RootSettling.h"
#include "Core/Safety/Scenario.h"
#include "Core/Storage/DraftCoding.h"

namespace nomely::test {
namespace {

Memo otherThan(Memo memo, const std::string& name, const std::string& updatedAt) {
  memo.memoId = "memo_" + name;
  memo.updatedAt = updatedAt;
  memo.body = name + " " + updatedAt + "\n";
  return memo;
}

struct Table {
  std::vector<Scenario> all;

  Scenario& add(const std::string& name, const Tree& left) {
    const auto settle = [](const StoreContext& context, const StoreContext&) {
      const MemoService service(context);
      service.trashStore().finishInterrupted();
      (void)RootSettling(service).run({});
    };
    Scenario& scenario = all.emplace_back(Scenario{name, settle, diary().with(left)});
    scenario.quiet = true;
    return scenario;
  }
};

// Notes that two machines wrote.
void addNotes(Table& table) {
  const Diary& d = diary();
  constexpr const char* early = "2026-02-01T08:00:00+08:00";
  constexpr const char* late = "2026-03-02T08:00:00+08:00";
  Memo newer = otherThan(d.changed.memo, "changed", late);
  newer.attachments = {"shared.png"};
  Memo older = otherThan(d.single.memo, "single", early);
  older.attachments = {"loose.bin"};
  table.add("settleStrays",
            {{"root/2026-03-01/002~1.md", Diary::textOf(newer)},
             {"root/2026-03-01/004 (1).md", Diary::textOf(older)},
             {"root/2026-03-01/001~1.md", Diary::textOf(otherThan(d.plain.memo, "new", late))},
             {"root/2026-03-01/x.md", "---\r\ntime: '07:00'\r\n---\r\n\r\n外来\r\n"}});
  table
      .add("settleMarkers",
           {{"root/.git/HEAD", "ref"},
            {"root/2026-03-01/001.md",
             "<<<<<<< HEAD\n" + Diary::textOf(d.plain.memo) + "=======\n" +
                 Diary::textOf(otherThan(d.plain.memo, "new", late)) + ">>>>>>> theirs\n"}})
      .destroys = true;  // the file with the markers
  table.add("settleNotesThatStandTwice",
            {{"root/.stfolder/x", "x"},
             {"root/2026-03-03/001.md", Diary::textOf(otherThan(d.distant.memo, "distant", late))},
             {"root/2026-03-01/005.md", Diary::textOf(d.plain.memo)}});
  Tree trash = Diary::trash(d.trashed(9, "gone.png"));
  Memo second = otherThan(d.plain.memo, "second", late);
  second.attachments = {"second.png"};
  trash.merge(
      Tree{{"root/.stfolder/x", "x"},
           {"root/.trash/2026-03-01_009/memo~1.md", Diary::textOf(second)},
           {"root/.trash/2026-03-01_009/attachments/second.png", "second"},
           {"root/.trash/2026-03-02_001/memo.md",
            Diary::textOf(otherThan(d.distant.memo, "distant", early))},
           {"root/.trash/2026-03-02_001/meta.txt", "2026-03-02,1"},
           {"root/.trash/2026-03-02_001/attachments/distant.bin", Diary::bytesOf("distant.bin")}});
  table.add("settleTrash", trash);
}

// Files that aren't notes.
void addOtherFiles(Table& table) {
  const Diary& d = diary();
  const auto quick = [&](const std::string& text) {
    return DraftCoding::encoded(
        QuickInputDraft{.text = text,
                        .pendingAttachmentDates = {{"distant.bin", d.second}},
                        .pendingAttachments = {"distant.bin"},
                        .selectedDate = d.first});
  };
  table.add("settleFilesOfBoth",
            {{"root/_config/ai-config.yaml", "a: 1\n"},
             {"root/_config/ai-config 2.yaml", "a: 2\n"},
             {"root/.drafts/quick-input.json", quick("这里的")},
             {"root/.drafts/quick-input (1).json", quick("那里的")},
             {"root/.drafts/focus-id-6d (1).json", "damaged"},
             {"root/.drafts/focus-id-6d.json", "{}"},
             {"root/.meta/feishu-inbox/om_1.json", R"({"messageId": "om_1"})"},
             {"root/.meta/feishu-inbox/om_1 2.json", R"({"messageId": "om_1", "n": 2})"}});
  const auto focus = [&](const std::string& text) {
    return DraftCoding::encoded(FocusMemoDraft{
        .memoId = d.changed.memo.memoId, .bodyText = text, .attachments = {"loose.bin"}});
  };
  const std::string draft =
      "root/.drafts/focus-id-" + DiskPaths::identityName(*d.changed.memo.memoId);
  table
      .add("settleFilesIntoOneAnother",
           {{"root/_config/tags.yaml", "colors: {工作: '#112233'}\nemojis: {}\nsortMode: date\n"},
            {"root/_config/tags~x.yaml", "colors: {旅行: '#FF8800'}\nemojis: {}\nsortMode: date\n"},
            {"root/_config/ai-config.yaml", "<<<<<<< a\na: 1\n=======\na: 2\n>>>>>>> b\n"},
            {"root/.meta/feishu-log.jsonl", "{\"timestamp\": 2}\n"},
            {"root/.meta/feishu-log 2.jsonl", "{\"timestamp\": 1}\n"},
            {draft + ".json", focus("这里的")},
            {draft + " (1).json", focus("那里的")}})
      .destroys = true;
}

}  // namespace

std::vector<Scenario> settlingScenarios() {
  Table table;
  addNotes(table);
  addOtherFiles(table);
  return table.all;
}

}  // namespace nomely::test
