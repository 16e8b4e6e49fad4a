#include "Core/Models/MemoJson.h"
#include "Core/Storage/DraftStore.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

using testing::Optional;
using testing::UnorderedElementsAre;

class DraftStoreTest : public StoreTest {
 protected:
  [[nodiscard]] std::vector<std::string> files() const {
    std::vector<std::string> names;
    for (const DirectoryEntry& entry : context.files.listAll(context.paths.draftsFolder()))
      names.push_back(entry.name);
    std::ranges::sort(names);
    return names;
  }
  [[nodiscard]] std::string bytes(const std::string& name) const {
    return context.files.read(context.paths.draftsFolder() / name).value();
  }
  void put(const std::string& name, std::string_view text) const {
    context.files.createDirectories(context.paths.draftsFolder());
    context.files.writeAtomically(context.paths.draftsFolder() / name, text);
  }
  [[nodiscard]] Memo stored(const std::string& body, std::optional<std::string> memoId) const {
    Memo memo = store.createMemo(date, {.body = body, .tags = {"旅行"}, .mood = 3});
    memo.memoId = std::move(memoId);
    store.memoStore().write(memo, date);
    return *store.memoStore().read(date, memo.seqNumber);
  }
  [[nodiscard]] static FocusMemoDraft draftOf(const Memo& memo) {
    return {.memoId = memo.memoId,
            .baseMemo = memo,
            .bodyText = memo.body,
            .tags = memo.tags,
            .mood = memo.mood,
            .attachments = memo.attachments,
            .audioTranscripts = memo.audioTranscripts,
            .originalNames = memo.originalNames};
  }

  Day date = day("2026-03-01");
  DraftStore drafts{context};
};

TEST_F(DraftStoreTest, QuickInputComesBackWhole) {
  const AudioTranscript transcript{"你好", {{.text = "你好", .start = 0.5, .duration = 1.25}}};
  Memo editing = stored("正文", "memo_a");
  editing.audioTranscripts["v.m4a"] = transcript;
  const QuickInputDraft draft{
      .text = "写到一半 \"引号\"\n第二行",
      .originalTextBeforeAI = "原来的",
      .attachmentsSnapshotBeforeAI = {{{"old.png"}, {{"old.m4a", transcript}}}},
      .pendingAttachmentDates = {{"a.png", day("2026-02-28")}},
      .pendingAttachments = {"a.png"},
      .pendingAudioTranscripts = {{"v.m4a", transcript}},
      .pendingOriginalNames = {{"a.png", "照片.png"}},
      .selectedMood = 5,
      .selectedDate = date,
      .activeRecordingPath = "/r/voice.m4a",
      .editingMemo = editing,
      .editingMemoDate = day("2025-12-31"),
      .updatedAt = clock.now()};
  drafts.saveQuickInputDraft(draft);
  const std::string saved = bytes("quick-input.json");
  const Json json = Json::parse(saved);
  EXPECT_EQ(json.size(), 13U) << "every field";
  EXPECT_EQ(json.at("updatedAt"), "2026-03-01T01:30:05Z");
  EXPECT_EQ(json.at("selectedDate"), "2026-03-01T04:00:00Z");
  drafts.saveQuickInputDraft(drafts.loadQuickInputDraft().value());
  EXPECT_EQ(bytes("quick-input.json"), saved);
  EXPECT_THAT(drafts.pendingAttachmentReferences(),
              Optional(UnorderedElementsAre("a.png", "v.m4a", "old.png", "old.m4a", "voice.m4a")));
}

TEST_F(DraftStoreTest, OnlyWhatWouldBeMissedIsKept) {
  drafts.clearQuickInputDraft();
  EXPECT_FALSE(context.files.exists(context.paths.draftsFolder())) << "nothing to clear";
  EXPECT_THAT(drafts.pendingAttachmentReferences(), Optional(IsEmpty()));
  const auto draft = [&](auto change) {
    QuickInputDraft made{.text = " \n　", .selectedDate = date, .updatedAt = clock.now()};
    change(made);
    drafts.saveQuickInputDraft(made);
    return drafts.loadQuickInputDraft().has_value();
  };
  EXPECT_TRUE(draft([](QuickInputDraft& made) { made.selectedMood = 1; }));
  EXPECT_FALSE(draft([](QuickInputDraft&) {})) << "blank: the draft from before goes";
  EXPECT_TRUE(draft([](QuickInputDraft& made) { made.originalTextBeforeAI = ""; }));
  EXPECT_TRUE(draft([](QuickInputDraft& made) { made.pendingAttachments = {"a"}; }));
  EXPECT_TRUE(draft([](QuickInputDraft& made) { made.pendingAudioTranscripts["a"]; }));
  EXPECT_TRUE(draft([](QuickInputDraft& made) { made.activeRecordingPath = "p"; }));
}

TEST_F(DraftStoreTest, DraftOfAMemoIsKeptWhileItSaysSomethingElse) {
  const Memo memo = stored("正文", "memo_a");
  const std::string file = "focus-id-6d656d6f5f61.json";
  for (const auto& [name, change] :
       std::vector<std::pair<std::string, std::function<void(FocusMemoDraft&)>>>{
           {"body", [](auto& draft) { draft.bodyText += "！"; }},
           {"tags", [](auto& draft) { draft.tags.clear(); }},
           {"mood", [](auto& draft) { draft.mood.reset(); }},
           {"attachments", [](auto& draft) { draft.attachments = {"a.png"}; }},
           {"transcripts", [](auto& draft) { draft.audioTranscripts["v.m4a"].text = "话"; }}}) {
    FocusMemoDraft draft = draftOf(memo);
    change(draft);
    drafts.saveFocusDraft(draft, date, memo.seqNumber);
    EXPECT_THAT(files(), ElementsAre(file)) << name;
    drafts.saveFocusDraft(draftOf(memo), date, memo.seqNumber);
    EXPECT_THAT(files(), IsEmpty()) << name;
  }
}

TEST_F(DraftStoreTest, DraftFollowsItsMemo) {
  const Memo memo = stored("正文", "memo_a");
  FocusMemoDraft draft = draftOf(memo);
  draft.bodyText = "改到一半";
  drafts.saveFocusDraft(draft, date, memo.seqNumber);
  const Day elsewhere = day("2026-04-01");
  EXPECT_EQ(drafts.loadFocusDraft(elsewhere, 9, "memo_a")->bodyText, "改到一半") << "moved";
  EXPECT_EQ(drafts.loadFocusDraft(date, memo.seqNumber, {})->bodyText, "改到一半") << "by number";
  EXPECT_FALSE(drafts.loadFocusDraft(date, memo.seqNumber, "memo_b"));
  fs::rename(context.paths.draftsFolder() / "focus-id-6d656d6f5f61.json",
             context.paths.draftsFolder() / "focus-id-6d656d6f5f62.json");
  EXPECT_FALSE(drafts.loadFocusDraft(date, memo.seqNumber, "memo_b")) << "another memo's";
}

TEST_F(DraftStoreTest, DraftFromBeforeTheIdentityIsFound) {
  Memo memo = stored("正文", {});
  FocusMemoDraft draft = draftOf(memo);
  draft.bodyText = "改到一半";
  drafts.saveFocusDraft(draft, date, memo.seqNumber);
  EXPECT_THAT(files(), ElementsAre("focus-2026-03-01-001.json"));
  memo.memoId = "memo_a";
  store.memoStore().write(memo, date);
  EXPECT_EQ(drafts.loadFocusDraft(date, memo.seqNumber, "memo_a")->bodyText, "改到一半");
  drafts.saveFocusDraft(draft, date, memo.seqNumber);
  EXPECT_THAT(files(), ElementsAre("focus-id-6d656d6f5f61.json"));
  put("focus-2026-03-01-001.json", bytes("focus-id-6d656d6f5f61.json"));
  drafts.clearFocusDraft(date, memo.seqNumber, "memo_a");
  EXPECT_THAT(files(), IsEmpty());
}

// A memo that is gone or unreadable says nothing, so the draft may be all there is.
TEST_F(DraftStoreTest, DraftOfALostMemoIsKept) {
  const Memo memo = stored("正文", "memo_a");
  const fs::path file = context.paths.memoFile(date, memo.seqNumber);
  for (const std::string text : {"没有文件头", ""}) {
    if (text.empty())
      fs::remove(file);
    else
      context.files.writeAtomically(file, text);
    drafts.saveFocusDraft(draftOf(memo), date, memo.seqNumber);
    EXPECT_EQ(drafts.loadFocusDraft(date, memo.seqNumber, "memo_a")->bodyText, "正文") << text;
    drafts.clearFocusDraft(date, memo.seqNumber, "memo_a");
  }
}

TEST_F(DraftStoreTest, WhatCannotBeDecodedIsMovedAside) {
  QuickInputDraft draft{.text = "新的", .selectedDate = date, .updatedAt = clock.now()};
  for (const std::string damaged :
       {"", "{", "[]", "{\"text\":1}", "{\"text\":\"没有别的\"}", "\xFF"}) {
    put("quick-input.json", damaged);
    EXPECT_FALSE(drafts.loadQuickInputDraft());
    EXPECT_EQ(drafts.pendingAttachmentReferences(), std::nullopt) << damaged;
    EXPECT_EQ(drafts.damagedDrafts().size(), 1U) << damaged;
    drafts.saveQuickInputDraft(draft);
    EXPECT_EQ(drafts.loadQuickInputDraft()->text, "新的");
    EXPECT_NE(drafts.pendingAttachmentReferences(), std::nullopt);
    ASSERT_EQ(drafts.damagedDrafts().size(), 1U);
    EXPECT_EQ(context.files.read(drafts.damagedDrafts().front()), damaged);
    fs::remove_all(context.paths.draftsFolder());
  }
  for (const char* text : {"一", "二"}) {
    put("quick-input.json", text);
    drafts.clearQuickInputDraft();
  }
  EXPECT_EQ(files().size(), 2U) << "damaged within one second, none over the other";
}

// A store on a root that comes and goes, and a folder of the machine.
class StrandedDraftTest : public DraftStoreTest {
 protected:
  void type(const std::string& text) {
    isKept =
        typing->saveQuickInputDraft({.text = text, .selectedDate = date, .updatedAt = clock.now()});
  }
  void vanish() const { fs::rename(folder.path(), away()); }
  void comeBack() const { fs::rename(away(), folder.path()); }
  [[nodiscard]] fs::path away() const { return folder.path().string() + "-away"; }
  [[nodiscard]] std::ptrdiff_t waiting() const {
    return fs::exists(machine) ? std::distance(fs::directory_iterator(machine), {}) : 0;
  }
  // What a process that is begun anew finds.
  [[nodiscard]] std::string found() const {
    const DraftStore later(context, machine);
    later.bringHome();
    const auto draft = later.loadQuickInputDraft();
    return draft ? draft->text : "";
  }

  TemporaryFolder state{quickParent()};
  fs::path machine = state.path() / "nomely/drafts";
  std::optional<DraftStore> typing{std::in_place, context, machine};
  bool isKept = false;
};

TEST_F(StrandedDraftTest, ComesHomeWithoutLosingWhatStandsThere) {
  struct Case {
    const char* name;
    const char* meanwhile;  // typed by others into the root; null: nothing, empty: taken away
    const char* found;
  };
  for (const auto& [name, meanwhile, expected] :
       {Case{"as it was left", nullptr, "一X二三"}, Case{"its draft is gone", "", "一X二三"},
        Case{"another draft", "别处的", "别处的\n\n一X二三"},
        Case{"another that holds it", "零一X二三四", "零一X二三四"}}) {
    SCOPED_TRACE(name);
    type("一二");
    vanish();
    for (const char* text : {"一X二", "一X二三"}) type(text);
    EXPECT_TRUE(isKept);
    EXPECT_EQ(typing->loadQuickInputDraft()->text, "一X二三");
    EXPECT_EQ(waiting(), 1);
    EXPECT_EQ(fs::status(machine).permissions(), fs::perms::owner_all);
    EXPECT_EQ(fs::status(fs::directory_iterator(machine)->path()).permissions(),
              fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_FALSE(fs::exists(folder.path())) << "an empty root would hide that it is gone";
    EXPECT_EQ(found(), "");
    comeBack();
    if (meanwhile != nullptr) {
      const DraftStore others(context);
      others.saveQuickInputDraft({.text = meanwhile, .selectedDate = date});
      if (*meanwhile != '\0') {
        type("一X二三");
        EXPECT_EQ(others.loadQuickInputDraft()->text, meanwhile) << "not written over";
      }
    }
    EXPECT_EQ(found(), expected);
    EXPECT_EQ(waiting(), 0);
    EXPECT_EQ(found(), expected);
    typing.emplace(context, machine);
    typing->clearQuickInputDraft();
  }
}

TEST_F(StrandedDraftTest, GoesWithItsTextAndFollowsARootThatMoved) {
  type("零");
  vanish();
  type("甲");
  type("");
  EXPECT_EQ(waiting(), 0) << "taken back";
  comeBack();
  type("乙");
  vanish();
  type("乙丙");
  const DraftStore moved(StoreContext({away()}, context.files, clock), machine);
  moved.bringHome();
  EXPECT_EQ(moved.loadQuickInputDraft()->text, "乙丙");
  comeBack();
  typing.emplace(context, machine);
  (void)typing->loadQuickInputDraft();
  vanish();
  type("乙丙丁");
  comeBack();
  type("乙丙丁戊");
  EXPECT_EQ(waiting(), 0) << "the root takes it again";
}

TEST_F(StrandedDraftTest, IsHeldInMemoryWhereNothingTakesIt) {
  const Memo memo = stored("正文", "memo_a");
  FocusMemoDraft draft = draftOf(memo);
  writeFile(machine.parent_path(), "in the way");
  vanish();
  type("一");
  EXPECT_FALSE(isKept);
  draft.bodyText = "改到一半";
  EXPECT_FALSE(typing->saveFocusDraft(draft, date, memo.seqNumber));
  EXPECT_FALSE(typing->keepAll());
  EXPECT_EQ(typing->loadQuickInputDraft()->text, "一");
  comeBack();
  type("一二");
  EXPECT_TRUE(typing->keepAll());
  EXPECT_EQ(DraftStore(context).loadFocusDraft(date, memo.seqNumber, "memo_a")->bodyText,
            "改到一半")
      << "that of a page that was left, too";
}

TEST_F(StrandedDraftTest, TwoDraftsOfAMemoBecomeOne) {
  const Memo memo = stored("正文\n\n---\n<!-- original-base64:5Y6f5paH -->", "memo_a");
  FocusMemoDraft draft = draftOf(memo);
  const auto write = [&](const DraftStore& by, const char* text, const char* tag) {
    draft.bodyText = std::string(text) + "\n\n---\n<!-- original-base64:5Y6f5paH -->";
    draft.tags = {tag};
    return by.saveFocusDraft(draft, date, memo.seqNumber);
  };
  (void)write(*typing, "正文一", "甲");
  (void)write(DraftStore(context), "别处的", "乙");
  EXPECT_TRUE(write(*typing, "正文一二", "甲"));
  const DraftStore later(context, machine);
  later.bringHome();
  const auto both = later.loadFocusDraft(date, memo.seqNumber, "memo_a").value();
  EXPECT_EQ(both.bodyText, "别处的\n\n正文一二\n\n---\n<!-- original-base64:5Y6f5paH -->");
  EXPECT_THAT(both.tags, ElementsAre("乙", "甲"));
}

}  // namespace
}  // namespace nomely::test
