#include <sys/stat.h>

#include "Core/Extensions/DateFormatters.h"
#include "Feishu/Conversation/FeishuLogStore.h"
#include "Platform/Concurrency/NotificationCenter.h"
#include "Platform/Files/FileError.h"
#include "Support/FaultyFileSystem.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

using Entries = std::vector<FeishuLogEntry>;

std::vector<std::string> texts(const Entries& entries) {
  std::vector<std::string> texts(entries.size());
  std::ranges::transform(entries, texts.begin(), &FeishuLogEntry::text);
  return texts;
}

std::string lineWith(const std::string& text) {
  return FeishuLogEntry{.id = "A", .timestamp = {}, .text = text}.line() + "\n";
}

TEST(FeishuLogEntryTest, LinesAreAsOtherProgramsWriteThem) {
  const FeishuLogEntry entry{
      .id = "0F8FAD5B",
      .direction = FeishuLogEntry::Direction::outgoing,
      .timestamp = *DateFormatters::parseUtcTimestamp("2026-03-01T01:30:05Z") +
                   std::chrono::microseconds(250001),
      .text = "👍 已记录\n\"\xff\""};
  EXPECT_EQ(entry.line(), R"({"id":"0F8FAD5B","direction":"outgoing","timestamp":794021405.250001,)"
                          R"("text":"👍 已记录\n\"�\""})");
  const auto with = [](const std::string& timestamp) {
    return FeishuLogEntry::fromLine(R"({"text":"字","timestamp":)" + timestamp +
                                    R"(,"direction":"incoming","id":"A"})");
  };
  EXPECT_EQ(with("794021405")->timestamp, with("\"2026-03-01T01:30:05Z\"")->timestamp);
  EXPECT_EQ(with("794021405.250001")->timestamp, entry.timestamp);
  for (const char* damaged : {"1e300", "1e999", "\"2026-03-01\"", "null"})
    EXPECT_FALSE(with(damaged)) << damaged;
  for (const char* damaged : {"[]", R"({"id":1,"direction":"incoming","timestamp":1,"text":""})",
                              R"({"id":"A","direction":"inward","timestamp":1,"text":""})"})
    EXPECT_FALSE(FeishuLogEntry::fromLine(damaged)) << damaged;
}

class FeishuLogStoreTest : public StoreTest {
 protected:
  FeishuLogStoreTest() { std::filesystem::create_directories(file.parent_path()); }

  const std::filesystem::path file = folder.path() / ".meta/feishu-log.jsonl";
};

TEST_F(FeishuLogStoreTest, The201stEntryLeaves200) {
  const auto log = FeishuLogStore::of(context);
  EXPECT_EQ(FeishuLogStore::of({{folder.path() / "."}, context.files, clock}), log);
  for (int i = 0; i <= 200; ++i) {
    log->logIncoming(std::to_string(i));
    if (i < 2 || i > 198) (void)log->load();  // else all are written together
  }
  const Entries kept = log->load();
  EXPECT_EQ(kept.size(), 200);
  EXPECT_EQ(kept.front().text, "1");
  EXPECT_EQ(kept.front().timestamp, clock.now());
  EXPECT_EQ(std::ranges::count(readFile(file), '\n'), 200);
  EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms(0600));
}

TEST_F(FeishuLogStoreTest, WhatAnotherProcessDoesToTheFileHolds) {
  const auto log = FeishuLogStore::of(context);
  int changes = 0;
  const auto heard = NotificationCenter::shared().observe(Notifications::feishuLogChanged,
                                                          [&](const auto&) { ++changes; });
  const auto afterAppending = [&](const char* text) {
    log->logOutgoing(text);
    return texts(log->load());
  };
  EXPECT_THAT(afterAppending("a"), ElementsAre("a"));
  // It ends in the middle of a line, and one before is damaged.
  writeFile(file, lineWith("b") + "damaged\n" + lineWith("c") + R"({"id":"A","dire)");
  EXPECT_THAT(afterAppending("d"), ElementsAre("b", "c", "d"));
  std::filesystem::remove(file);
  EXPECT_THAT(log->load(), testing::IsEmpty());
  EXPECT_THAT(afterAppending("e"), ElementsAre("e"));
  log->clear();
  EXPECT_FALSE(std::filesystem::exists(file));
  EXPECT_THAT(afterAppending("f"), ElementsAre("f"));
  EXPECT_EQ(changes, 5);
}

// Whatever fails while one entry is appended, the next finds its place, and all that is lost is
// the one that was under way.
TEST_F(FeishuLogStoreTest, AFaultDamagesOneLineAtMost) {
  using Mode = FaultyFileSystem::Mode;
  for (const std::size_t before : {0, 3, 200}) {
    std::string lines;
    for (std::size_t i = 0; i < before; ++i) lines += lineWith("before");
    for (const Mode mode : {Mode::fail, Mode::partial, Mode::failLate})
      for (std::uint64_t call = 1;; ++call) {
        SCOPED_TRACE(testing::Message() << before << " entries, call " << call);
        std::filesystem::remove(file);
        if (before > 0) writeFile(file, lines);
        FaultyFileSystem faulty(posixFileSystem(), {.mode = mode, .atCall = call});
        const auto log = FeishuLogStore::of({{folder.path()}, FileManager(faulty), clock});
        log->logIncoming("struck");
        try {
          (void)log->load();
        } catch (const FileError&) {
        }
        if (faulty.calls() < call) break;
        log->logIncoming("next");
        const auto kept = texts(log->load());
        ASSERT_GE(kept.size(), std::min<std::size_t>(before + 1, 200));
        EXPECT_EQ(kept.back(), "next");
        EXPECT_LE(std::ranges::count(readFile(file), '\n'), kept.size() + 1);
      }
  }
}

}  // namespace
}  // namespace nomely::test
