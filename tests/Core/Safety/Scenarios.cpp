#include <algorithm>
#include <stdexcept>

#include "Core/Extensions/DateFormatters.h"
#include "Core/Lifecycle/Backup/BackupManager.h"
#include "Core/Lifecycle/Maintenance/DataMigrator.h"
#include "Core/Lifecycle/Maintenance/LegacyColorSpans.h"
#include "Core/Lifecycle/Maintenance/SchemaMigrator.h"
#include "Core/Lifecycle/Maintenance/StartupMaintenance.h"
#include "Core/Lifecycle/Maintenance/TemporaryFileSweep.h"
#include "Core/Query/TagManagementStore.h"
#include "Core/Safety/Scenario.h"
#include "Core/Service/MemoService.h"
#include "Core/Storage/AttachmentManager.h"
#include "Core/Storage/ConfigSecrets.h"
#include "Core/Storage/DraftCoding.h"
#include "Core/Storage/DraftStore.h"
#include "Core/Storage/MemoBatch.h"
#include "Core/Storage/TagConfigStore.h"
#include "Core/Storage/VersionStore.h"
#include "Platform/Settings/FileSecrets.h"
#include "Platform/Settings/UserDefaults.h"

namespace nomely::test {
namespace {

using Context = const StoreContext&;

struct Table {
  std::vector<Scenario> all;

  Scenario& add(std::string name, Scenario::Run run, Tree before = diary().tree) {
    return all.emplace_back(Scenario{std::move(name), std::move(run), std::move(before)});
  }
};

// An operation on a memo as it stands, whatever its number unless it has no identity; none when it
// has left the day.
Scenario::Run on(const Diary::Entry& entry,
                 const std::function<void(Context, Day, const Memo&)>& operation) {
  return [=](Context context, Context sight) {
    for (const Memo& memo : DayStore(sight).listMemos(entry.day))
      if (entry.memo.memoId ? memo.memoId == entry.memo.memoId
                            : memo.seqNumber == entry.memo.seqNumber)
        return operation(context, entry.day, memo);
  };
}

// One that is the same every time.
Scenario::Run always(const std::function<void(Context)>& operation) {
  return [=](Context context, Context) { operation(context); };
}

// "own.png" is let go.
Memo edited(Memo memo) {
  memo.attachments = {"shared.png"};
  memo.updatedAt = DateFormatters::timestamp(diary().clock.now());
  memo.body = "改过了\n";
  return memo;
}

void addMemos(Table& table) {
  const Diary& d = diary();
  const auto creating = [](Day day, const std::vector<std::string>& attachments) {
    return always([=](Context context) {
      (void)DayStore(context).createMemo(day, {.body = "新的一条\n" + std::string(600, '.'),
                                               .tags = {"新"},
                                               .mood = 4,
                                               .attachments = attachments,
                                               .time = "21:07"});
    });
  };
  table.add("createMemoInDayWithMemos", creating(d.first, {"loose.bin"}));
  table.add("createMemoInMissingRoot", creating(d.missing, {}), {});
  const auto batch = always([&d](Context context) {
    context.write([&] {
      MemoBatch memos(context);
      memos.add(d.first, Memo::empty(1, d.clock));
      Memo memo = Memo::empty(1, d.clock);
      memo.attachments = {
          memos
              .addFile(
                  d.missing, [](const auto& sink) { sink("sound"); }, [] { return "m4a"; })
              .value()};
      memos.add(d.missing, memo);
      memos.place();
      MemoBatch::settle(context);
    });
  });
  table.add("createMemosInABatch", batch);
  const auto updating = on(d.changed, [](Context context, Day day, const Memo& memo) {
    DayStore(context).updateMemo(edited(memo), day, memo);
  });
  table.add("updateMemo", updating).destroys = true;
  const auto deleting = on(d.single, [](Context context, Day day, const Memo& memo) {
    DayStore(context).deleteMemo(day, memo);
  });
  table.add("deleteMemo", deleting).destroys = true;
}

void addAttachments(Table& table) {
  const Diary& d = diary();
  table.add("deleteFile", always([&](Context context) {
              AttachmentManager(context).deleteFile("loose.bin", d.first);
            }));
  table.add("AttachmentStorageSave", always([&](Context context) {
              (void)AttachmentStorage::save(context, "bytes of an edited photo", "jpg",
                                            context.paths.dayFolder(d.missing))
                  .value();
            }));
}

void addHistory(Table& table) {
  const Diary& d = diary();
  Memo oldest = d.changed.memo;
  oldest.body = "最早的一稿\n";
  oldest.attachments = {"shared.png", "distant.bin"};
  Tree versions = Diary::snapshot(oldest, "1500000000.5");
  const std::string folder =
      std::filesystem::path(versions.begin()->first).parent_path().string() + "/attachments/";
  versions[folder + "distant.bin"] = Diary::bytesOf("distant.bin");

  Tree layouts = versions;
  layouts["root/.versions/2026-03-01_002/1500000000_0F8FAD5B.md"] = Diary::textOf(d.changed.memo);
  layouts["root/.versions/2026-03-01_002/1500000001_0F8FAD5B.md"] = Diary::textOf(d.sharing.memo);
  const auto clearing = on(d.changed, [](Context context, Day day, const Memo& memo) {
    VersionStore(context).deleteAllVersions(day, memo.seqNumber, {});
  });
  table.add("deleteAllVersions", clearing, d.with(layouts)).destroys = true;

  // Back to the oldest of as many versions as are kept, which names a file that lies beside the
  // versions alone. The version is pushed out by that of the state that it replaces.
  Tree drafts = d.manySnapshots();
  while (drafts.size() >= VersionStore::defaultMaxVersions) drafts.erase(drafts.begin());
  versions.merge(drafts);
  const auto restoring = [&d, text = oldest.body](Context context, Context sight) {
    const std::int64_t number = d.changed.memo.seqNumber;
    for (const VersionEntry& version : VersionStore(sight).listVersions(d.first, number, {}))
      if (version.memo.body == text)
        VersionStore(context).restore(d.first, number, version, std::nullopt);
  };
  table.add("restoreVersion", restoring, d.with(versions));
}

using Operation = std::function<void(const MemoService&, Day, const Memo&)>;

Scenario::Run serving(const Diary::Entry& entry, const Operation& operation) {
  return on(entry, [=](Context context, Day day, const Memo& memo) {
    operation(MemoService(context), day, memo);
  });
}

std::filesystem::path photo(const MemoService& service) {
  return service.context().paths.rootURL.parent_path() / "Photo.JPG";
}

void addService(Table& table) {
  const Diary& d = diary();
  const auto add = [&](const std::string& name, const Operation& operation) {
    table.add(name, serving(d.changed, operation));
  };
  table.add("createWithFile", always([&](Context context) {
              const MemoService service(context);
              (void)service.create(d.missing, {.body = "带附件 #旅行\n"}, {photo(service)});
            }));
  table.add("createWithPending", always([&](Context context) {
              (void)MemoService(context).create(
                  {.body = "附件在别处\n", .attachments = {"loose.bin", "distant.bin"}},
                  {.sourceDates = {{"distant.bin", d.second}},
                   .fallbackDate = d.first,
                   .destinationDate = d.missing});
            }));
  const Operation committing = [](auto& service, Day day, auto& memo) {
    service.commit(day, edited(memo), memo);
  };
  add("commit", committing);
  table.add("commitWithManySnapshots", serving(d.changed, committing), d.with(d.manySnapshots()));
  add("change", [](auto& service, Day day, auto& memo) {
    service.change(day, memo, [](Memo& changed) { changed.mood = 5; });
  });
  add("edit", [](auto& service, Day day, auto& memo) { service.edit(day, memo, "改成 #这样\n"); });
  add("append", [](auto& service, Day day, auto& memo) {
    if (!memo.body.ends_with("又一段")) service.append(day, memo, "又一段");
  });
  add("attach", [](auto& service, Day day, auto& memo) {
    if (memo.originalNames.empty()) service.attach(day, memo, {photo(service)});
  });
  add("detach", [](auto& service, Day day, auto& memo) {
    service.detach(day, memo, {"own.png", "shared.png"});
  });
  add("moveToNewDay",
      [&](auto& service, Day day, auto& memo) { service.move(day, memo, d.missing); });
  add("moveToDayWithMemos",
      [&](auto& service, Day day, auto& memo) { service.move(day, memo, d.second); });
  add("rewrite", [](auto& service, Day day, auto& memo) {
    service.rewrite(day, memo.seqNumber,
                    [](Memo& changed) { return std::exchange(changed.mood, 2) != 2; });
  });

  // Written elsewhere, with keys that we drop and no identity.
  Diary::Entry foreign{d.first, {}};
  foreign.memo.seqNumber = 5;
  const Tree withForeign = d.with(
      {{"root/2026-03-01/005.md", "---\ntime: 08:00\nweather: 晴\ntags: [外来]\n---\n\n外来\n"}});
  table.add("editForeign",
            serving(foreign, [](auto& service, Day day,
                                auto& memo) { service.edit(day, memo, "改过的外来\n"); }),
            withForeign);
  table.add("mend", always([&](Context context) { (void)MemoService(context).mend(d.first, 5); }),
            d.with({{"root/2026-03-01/005.md", "---\r\ntime: 08:00\r\n---\r\n\r\n换行不同\r\n"}}));

  // A memo of which nothing but a snapshot is left, and its number given away.
  for (const bool isTaken : {false, true}) {
    const Diary::Entry vanished = d.trashed(isTaken ? 2 : 6, "shared.png");
    table.add(
        isTaken ? "restoreVanishedWhoseNumberIsTaken" : "restoreVanished",
        [=](Context context, Context sight) {
          for (const Memo& memo : DayStore(sight).listMemos(vanished.day))
            if (memo.memoId == vanished.memo.memoId) return;
          const VersionEntry version =
              VersionStore(sight)
                  .listVersions(vanished.day, vanished.memo.seqNumber, vanished.memo.memoId)
                  .at(0);
          MemoService(context).restoreVanished(version);
        },
        d.with(Diary::stranded(vanished)));
  }
}

void addTrash(Table& table) {
  const Diary& d = diary();
  const auto trashing =
      serving(d.changed, [](auto& service, Day day, auto& memo) { service.trash(day, memo); });
  // Looking at the trash finishes what was cut off.
  table.add("trash", [=](Context context, Context sight) {
    (void)MemoService(context).trashed();
    trashing(context, sight);
  });

  using Entries = std::vector<TrashEntry>;
  const auto entriesOf = [](const std::vector<Diary::Entry>& trashed) {
    Entries entries;
    for (const auto& [date, memo] : trashed)
      entries.push_back({date, memo, Diary::trashFolder(date, memo)});
    return entries;
  };
  const auto treeWith = [&](const std::vector<Diary::Entry>& trashed) {
    Tree tree = d.tree;
    for (const Diary::Entry& entry : trashed) tree.merge(Diary::trash(entry));
    return tree;
  };
  const auto restore = [&](const std::string& name, const std::vector<Diary::Entry>& trashed) {
    const auto run = [entries = entriesOf(trashed)](Context context, Context sight) {
      (void)MemoService(context).trashed();  // finishes what was cut off
      Entries left = entries;
      std::erase_if(left, [&](const TrashEntry& entry) {
        return !sight.files.exists(sight.paths.trashFolder() / entry.trashSubdir);
      });
      for (const TrashEntry& entry : left) (void)MemoService(context).restore(entry);
    };
    table.add(name, run, treeWith(trashed));
  };
  const Diary::Entry free = d.trashed(7, "fresh.bin");
  const Diary::Entry numberTaken = d.trashed(2, "fresh.bin");
  const Diary::Entry nameTaken = d.trashed(8, "loose.bin");
  restore("restoreMemo", {free});
  restore("restoreMemosWhoseNumberOrAttachmentsNameIsTaken", {numberTaken, nameTaken});

  Tree full = treeWith({free, numberTaken, nameTaken});
  full["root/.trash/_attachments/2026-03-01_080000/x.bin"] = "x";
  const auto deleting = always([entries = entriesOf({numberTaken, nameTaken})](Context context) {
    MemoService(context).destroy(entries);
  });
  table.add("deleteTrashEntries", deleting, full).destroys = true;
  const auto emptying = always([](Context context) { MemoService(context).emptyTrash(); });
  Scenario& all = table.add("emptyTrash", emptying, full);
  all.destroys = all.strands = true;
}

// Merging and deleting a tag go the way of renaming it.
void addTags(Table& table) {
  const auto bulk = [&](const std::string& name, const auto& operation) {
    table
        .add(name, always([=](Context context) {
               const MemoService service(context);
               (void)service.trashed();  // finishes what was cut off
               JobPool jobs;             // starts no thread unless it is used
               SearchIndex index(context, jobs);
               if (operation(TagManagementStore(service, index)).failed > 0)
                 throw std::runtime_error("not all");
             }))
        .quiet = true;  // of days that can't be listed
  };
  bulk("renameTag", [](const auto& tags) { return tags.renameTag("旅行", "出行"); });
  bulk("deleteTagWithMemos", [](const auto& tags) { return tags.deleteTagWithMemos("旅行"); });
}

void addDrafts(Table& table) {
  const Diary& d = diary();
  const std::string file = "root/.drafts/quick-input.json";
  const auto saving = always([&](Context context) {
    DraftStore(context).saveQuickInputDraft({.text = "second draft\n" + std::string(600, '.'),
                                             .selectedDate = d.first,
                                             .updatedAt = d.clock.now()});
  });
  const Tree former = {{file, DraftCoding::encoded(QuickInputDraft{.text = "first draft",
                                                                   .selectedDate = d.first})}};
  const auto add = [&](const std::string& name, const Scenario::Run& run, const Tree& before) {
    Scenario& scenario = table.add(name, run, d.with(before));
    scenario.quiet = true;
    scenario.destroys = before == former;
  };
  add("saveDraft", saving, former);
  add("saveDraftOverADamagedOne", saving, {{file, "{\"text\": \"unreadable draft"}});
  add("clearDraft", always([](Context context) { DraftStore(context).clearQuickInputDraft(); }),
      former);
}

struct Account {
  static constexpr std::string_view fileName = "account.yaml";
  std::string user;
  std::string apiKey;
};

ConfigFields configFields(Account& account) {
  return {{.key = "user", .target = &account.user},
          {.key = "apiKey", .target = &account.apiKey, .account = "key"}};
}

void addSettings(Table& table) {
  const std::string tags = "root/_config/tags.yaml";
  const auto coloring = always([](Context context) {
    TagConfigStore store{ConfigStore(context)};
    store.setColor("#FF8800", "旅行");
    if (!store.isSaved()) throw std::runtime_error("not saved");
  });
  table.add("setTagColor", coloring);
  table
      .add("setTagColorOverOthers", coloring,
           {{tags, "colors: {工作: '#112233'}\nemojis: {}\nsortMode: date\n"}})
      .destroys = true;
  table.add("setTagColorOverDamage", coloring, {{tags, "colors: [\n"}});
  // The line with the secret goes; wherever it is stopped, the secret itself is known.
  const auto moving = [](Context context, Context sight) {
    const auto secretsOf = [](Context from) {
      return std::make_unique<FileSecrets>(from.paths.rootURL, from.files);
    };
    const std::string known = KeychainStore(*secretsOf(sight)).string("key").value_or("");
    Account account = ConfigStore(context).load<Account>(Account::fileName).value();
    if (known != "sk-1" && account.apiKey != "sk-1") throw std::logic_error("the secret is lost");
    const auto backend = secretsOf(context);
    ConfigSecrets(ConfigStore(context), KeychainStore(*backend)).moveOut(account);
  };
  table
      .add("moveSecretOutOfSettings", moving,
           {{"root/_config/account.yaml", "user: me\napiKey: sk-1\n"}})
      .destroys = true;
}

void addBackups(Table& table) {
  const auto backup = always([](Context context) { (void)BackupManager(context, 3).backup(); });
  const std::string large(70'000, 'x');  // too large to be packed with the others
  table.add("backup", backup, diary().with({{"root/2026-03-02/large.txt", large}}));
  Tree archives{{"root/.backups/nomely-manual-2026-02-19_000000.zip", "manual"}};
  for (const std::string stamp : {"20_000000-A", "20_000000-B", "21_000000-A", "22_000000-A"})
    archives["root/.backups/nomely-auto-2026-02-" + stamp + ".zip"] = "made on " + stamp;
  table.add("backupWithTooMany", backup, archives).destroys = true;
}

// What is logged and passed over is left to the next pass.
void addMaintenance(Table& table) {
  const Diary& d = diary();
  const auto add = [&](const std::string& name, const auto& operation, const Tree& before) {
    table
        .add(name, always([=](Context context) { operation(MemoService(context)); }),
             d.with(before))
        .quiet = true;
  };
  add("migrateOldestLayout",
      [](const MemoService& service) {
        if (!DataMigrator(service.context()).migrate({}).errors.empty())
          throw std::runtime_error("not all");
      },
      {{"root/2009/03/01.md",
        "---\ntags: [旧, 日记]\nmood: 3\n---\n\n前言\n\n## 08:05\n早起\n\n## 夜里\n见 1.jpg\n"},
       {"root/2009/03/01/1.jpg", Diary::bytesOf("1.jpg")},
       {"root/2009/03/01/11.jpg", Diary::bytesOf("11.jpg")},
       {"root/2009/03/01/003.md", "named like a memo"},
       {"root/2026/03/01.md", "这一天已经有了\n"}});
  add("cleanColorSpans", [](const MemoService& service) { LegacyColorSpans::clean(service, {}); },
      {{"root/2026-03-01/005.md",
        "---\ntime: 08:00\nweather: 晴\n---\n\n<span style=\"color: #FF0000\">红</span>字\n"}});
  add("migrateSchema",
      [](const MemoService& service) {
        if (SchemaMigrator(service).runAllMigrations({}).failed > 0)
          throw std::runtime_error("not all");
      },
      {{"root/2026-03-01/005.md", "---\ntime: 9:5\nweather: 晴\n---\n\n外来\n"}});
  const auto pass = [](Context context, Context sight) {
    if (const auto lost =
            sight.files.fileSystem().open(sight.paths.dayFolder(diary().first) / "lost.m4a",
                                          FileSystem::OpenMode::read, LinkPolicy::noFollow))
      lost->setModified({});
    UserDefaults defaults(context.paths.rootURL, context.files);
    const MemoService service(context);
    const StartupMaintenance maintenance(service, defaults, {.backup = [](const auto&) {}});
    (void)maintenance.run({});
  };
  table
      .add("startupMaintenance", pass,
           d.with({{"root/2026-03-01/lost.m4a", Diary::bytesOf("lost.m4a")},
                   {"root/.meta/nomely.lastMigratedSchemaVersion", "2\n"}}))
      .quiet = true;
}

void addOthers(Table& table) {
  table.add("sweepTemporaryFiles",
            always([](Context context) { sweepTemporaryFiles(context, {}); }));
  const auto setting = always([](Context context) {
    UserDefaults(context.paths.rootURL, context.files).setInteger("width", 2);
  });
  const std::string file = "root/defaults.json";
  table.add("setDefault", setting, {{file, R"({"width": 1, "height": 3})"}}).destroys = true;
  table.add("setDefaultOfDamagedFile", setting, {{file, "{"}});
}

}  // namespace

std::vector<Scenario> scenarios() {
  Table table;
  for (const auto add : {addMemos, addAttachments, addHistory, addService, addTrash, addTags,
                         addDrafts, addSettings, addBackups, addMaintenance, addOthers})
    add(table);
  for (Scenario& scenario : settlingScenarios()) table.all.push_back(std::move(scenario));
  return table.all;
}

}  // namespace nomely::test
