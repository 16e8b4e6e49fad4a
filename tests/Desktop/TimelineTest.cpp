#include "Desktop/Support/DesktopTest.h"

namespace nomely::test {
namespace {

using TimelineTest = DesktopTest;

TEST_F(TimelineTest, PinsAndDeletesFromACard) {
  put("2026-03-01", 1, "早上");
  put("2026-03-01", 2, "晚上");
  open();
  ASSERT_EQ(screens().timeline()->model()->rowCount(), 2);
  grab("timeline.png");
  click("cardPin");
  ASSERT_TRUE(eventually([&] {
    return readFile(root / "2026-03-01/002.md").find("pinned: true") != std::string::npos;
  }));
}

}  // namespace
}  // namespace nomely::test
