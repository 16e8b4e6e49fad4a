#include "Core/Storage/DayStore.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

using DayStoreTest = StoreTest;

TEST_F(DayStoreTest, CreatedMemoReadsBack) {
  const Day today = day("2026-03-01");
  const Memo memo = store.createMemo(today, {.body = "你好\n", .tags = {"生活"}});
  EXPECT_EQ(memo.seqNumber, 1);
  EXPECT_EQ(store.listMemos(today), std::vector{memo});
}

}  // namespace
}  // namespace nomely::test
