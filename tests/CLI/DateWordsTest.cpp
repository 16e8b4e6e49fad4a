#include "CLI/DateWords.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

TEST(DateWordsTest, DaysAsPeopleWriteThem) {
  const Day today = Day::parse("2026-03-04").value();  // a Wednesday
  for (const auto& [text, day] :
       rowsOf<2>("2024-02-29¦2024-02-29¦TODAY¦2026-03-04¦昨天¦2026-03-03¦前天¦2026-03-02¦"
                 "明天¦2026-03-05¦Tomorrow¦2026-03-05¦3-4¦2026-03-04¦3-5¦2025-03-05¦"
                 "12-31¦2025-12-31¦02-29¦2024-02-29¦周三¦2026-03-04¦周四¦2026-02-26¦"
                 "星期日¦2026-03-01¦礼拜天¦2026-03-01¦Fri¦2026-02-27¦monday¦2026-03-02¦"
                 "-0¦2026-03-04¦-3¦2026-03-01¦3天前¦2026-03-01¦1 day ago¦2026-03-03¦"
                 "10 Days Ago¦2026-02-22¦ 今天 ¦2026-03-04"))
    EXPECT_EQ(DateWords::day(text, today), Day::parse(day)) << text;
  for (const std::string& text : piecesOf("¦-¦--3¦+3¦-+3¦3¦3-32¦13-1¦2-30¦+3-1¦2026-3-5¦周八¦天前¦"
                                          "-99999999999999999999"))
    EXPECT_EQ(DateWords::day(text, today), std::nullopt) << text;
}

}  // namespace
}  // namespace nomely::test
