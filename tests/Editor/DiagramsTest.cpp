#include <atomic>
#include <filesystem>
#include <future>
#include <latch>

#include <fmt/format.h>

#include "Editor/Diagrams/DiagramHelper.h"
#include "Editor/Diagrams/MermaidRenderCache.h"
#include "Editor/Diagrams/MermaidSnapshotStore.h"
#include "Platform/Audio/HelperProcess.h"
#include "Platform/Cancellation.h"
#include "Platform/Text/Base64.h"
#include "Support/Deadline.h"
#include "Support/FakeDiagramProgram.h"
#include "Support/Matchers.h"

namespace nomely::test {
namespace {

using namespace std::chrono_literals;
using testing::AnyOf;

TEST(MermaidRenderCacheTest, TheFirstInsertedGoesFirst) {
  MermaidRenderCache cache;
  for (int i = 0; i < 24; ++i) cache.store("old", fmt::format("{}", i));
  cache.store("new", "0");  // known: neither younger nor one more
  EXPECT_EQ(cache.svg("0"), "new");
  cache.store("svg", "24");
  EXPECT_EQ(cache.svg("0"), std::nullopt);
  EXPECT_EQ(cache.svg("1"), "old");
  EXPECT_EQ(cache.svg("24"), "svg");
}

// Draws when it is let, and fails for "bad".
class GatedRenderer : public DiagramRenderer {
 public:
  DiagramPicture render(const DiagramRequest& request, const std::stop_token& /*stop*/) override {
    {
      const std::lock_guard lock(mutex);
      drawn.push_back(request.code);
    }
    begun.count_down();
    gate.wait();
    if (request.code == "bad") throw DiagramError(DiagramError::Kind::diagram, "bad");
    return {.png = request.code, .width = 600, .height = 50};
  }

  std::mutex mutex;
  std::vector<std::string> drawn;
  std::latch begun{1};
  std::latch gate{1};
};

TEST(MermaidSnapshotStoreTest, EachSourceIsDrawnOnceWhoeverAsks) {
  GatedRenderer renderer;
  MermaidSnapshotStore store(renderer);
  const std::jthread first([&] { store.prepare({"a"}); });
  renderer.begun.wait();
  const auto second = waitingThread([&] { store.prepare({"b", "bad", "a", "b"}); });
  std::stop_source stop;
  stop.request_stop();
  EXPECT_THROW(store.prepare({"a"}, stop.get_token()), CancellationError);
  renderer.gate.count_down();
  store.prepare({"a", "b"});
  const_cast<std::jthread&>(second).join();
  EXPECT_THAT(renderer.drawn, ElementsAre("a", "b", "bad"));
  EXPECT_EQ(store.snapshot("a")->png, "a");
  EXPECT_EQ(store.snapshot("bad"), std::nullopt);
}

class DiagramHelperTest : public testing::Test {
 protected:
  // What became of the source: "300x120", or the failure's code and text.
  std::string draw(const std::string& code) {
    try {
      const DiagramPicture picture = helper.render({.code = code}, {});
      EXPECT_EQ(encodeBase64(picture.png), FakeDiagramProgram::pixel);
      return fmt::format("{}x{}", picture.width, picture.height);
    } catch (const DiagramError& error) {
      return fmt::format("{}: {}", error.code(), error.what());
    }
  }

  TemporaryFolder folder;
  FakeDiagramProgram fake{folder.path()};
  std::unique_ptr<Timers> timers = makeSystemTimers();
  DiagramHelper helper{*timers,
                       {.program = fake.program, .patience = 400ms, .longestSource = 100'000}};
};

TEST_F(DiagramHelperTest, AnswersAndFailuresOfTheProgram) {
  const struct {
    std::string code;
    std::string_view result;
    int starts;  // of the program so far
  } rows[] = {
      {"plain 图\n\"quoted\" \xFF", "300x120", 1},
      {"junk before", "300x120", 1},
      {"error:diagram;", "diagram.source: line 2", 1},
      {"error:nothing;", "diagram.nothing: ", 1},
      {"error:pages;", "diagram.pages: 未在 App 内找到 mermaid 渲染模板，请重新安装 Nomely。", 1},
      {"error:unheard;", "diagram.crashed: ", 1},
      {"empty", "diagram.crashed: ", 1},
      {std::string(100'001, 'x'), "diagram.large: ", 1},
      {"crash", "diagram.crashed: 画这张", 2},
      {"after", "300x120", 3},
      {"hang", "diagram.slow: ", 3},
      {"after that", "300x120", 4},
  };
  for (const auto& row : rows) {
    EXPECT_THAT(draw(row.code), StartsWith(row.result)) << row.code.substr(0, 20);
    EXPECT_EQ(fake.count("started"), row.starts) << row.code.substr(0, 20);
  }
  // What was drawn before goes along, so that it is only shown again; in another look it is drawn.
  EXPECT_EQ(fake.count("<svg>"), 0);
  EXPECT_EQ(draw("after that"), "300x120");
  EXPECT_EQ(fake.count("<svg>drawn</svg>"), 1);
  (void)helper.render({.code = "after that", .look = DiagramLook::dark}, {});
  EXPECT_EQ(fake.count("<svg>drawn</svg>"), 1);
}

TEST_F(DiagramHelperTest, AProgramThatAlwaysEndsIsGivenUp) {
  for (int i = 0; i < 4; ++i) EXPECT_THAT(draw("crash"), StartsWith("diagram.crashed: "));
  EXPECT_EQ(fake.count("started"), 6);
  EXPECT_THAT(draw("fine"), HasSubstr("重新打开"));
}

TEST_F(DiagramHelperTest, WhoLeavesDisturbsNobody) {
  std::stop_source stop;
  std::promise<bool> left;
  const auto leaver = waitingThread([&] {
    EXPECT_THROW((void)helper.render({.code = "slow"}, stop.get_token()), CancellationError);
    left.set_value(true);
  });
  stop.request_stop();
  EXPECT_TRUE(inTime(left));
  EXPECT_EQ(draw("next"), "300x120");
  EXPECT_EQ(fake.count("started"), 1);
  DiagramHelper none(*timers, {.program = "nomely-no-diagrams"});
  EXPECT_FALSE(none.isInstalled());
  EXPECT_THROW((void)none.render({.code = "a"}, {}), DiagramError);
}

// The program itself, where it was built.
TEST(DiagramProgramTest, DrawsOfflineAndSurvivesHostileDiagrams) {
  if (!HelperProcess::isInstalled("nomely-diagrams")) GTEST_SKIP() << "needs Qt WebEngine";
  const auto timers = makeSystemTimers();
  DiagramHelper helper(*timers);
  const auto draw = [&](const std::string& code) -> std::string {
    try {
      const DiagramPicture picture = helper.render({.code = code, .scale = 2}, {});
      EXPECT_THAT(picture.png, StartsWith("\x89PNG"));
      return picture.height >= 50 && picture.width <= 600 ? "drawn" : "wrong size";
    } catch (const DiagramError& error) {
      return fmt::format("{} {}", error.code(), error.what());
    }
  };
  if (draw("graph TD\nA-->B").starts_with("diagram.pages")) GTEST_SKIP() << "needs mermaid";
  std::string many = "graph TD\n";
  for (int i = 0; i < 499; ++i) many += fmt::format("A{} --> A{}\n", i, i + 1);
  const struct {
    std::string code;
    std::string_view result;
  } rows[] = {
      {"graph TD\nA[开始] --> B{要写吗?}\nclick A \"https://example.com\"", "drawn"},
      {"gantt\ndateFormat YYYY-MM-DD\nsection 一\n写 :a, 2026-03-01, 3d", "drawn"},
      {"graph TD\nA --> --> B", "diagram.source Parse error on line 2"},
      {"", "diagram.source"},
      {"graph TD\nA[\"<script>while(1);</script><img src=x onerror='while(1)'>\"]\nclick A call "
       "alert()",
       "drawn"},
      {"%%{init: {\"securityLevel\": \"loose\", \"htmlLabels\": true, \"flowchart\": "
       "{\"htmlLabels\": true}}}%%\n"
       "graph TD\nA[\"<iframe src='file:///etc/passwd'></iframe>\"]",
       "drawn"},
      {"flowchart TD\nA@{ img: \"https://example.com/a.png\", w: 60, h: 60 }", "diagram.source"},
      {"graph TD\n" + std::string(150'000, 'A'), "drawn"},  // the library's own notice
      {many, "drawn"},
      {"sequenceDiagram\nA->>B: still there", "drawn"},
  };
  for (const auto& row : rows) {
    EXPECT_THAT(draw(row.code), StartsWith(row.result)) << row.code.substr(0, 60);
    EXPECT_THAT(
        MermaidRenderCache::shared(DiagramLook::light).svg(row.code).value_or(""),
        Not(AnyOf(HasSubstr("<foreignObject"), HasSubstr("<script"), HasSubstr("<iframe"))));
  }
}

}  // namespace
}  // namespace nomely::test
