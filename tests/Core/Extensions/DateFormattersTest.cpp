#include <gtest/gtest.h>

#include "Core/Extensions/DateFormatters.h"
#include "Platform/Time/LocalTime.h"
#include "Support/ForkedRun.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

using namespace DateFormatters;

constexpr Moment utc(long long seconds) {
  return Moment(std::chrono::seconds(seconds));
}

TEST(DateFormattersTest, FormatsAndReadsBack) {
  const struct {
    const SafeDateFormatter& formatter;
    const char* text;
    const char* moment;  // what the text means; fields that it lacks have their defaults
  } cases[] = {
      {isoDate, "2026-03-01", "20260301000000000"},
      {isoDateTime, "2026-03-01 09:30:05", "20260301093005000"},
      {timeOnly, "09:30", "20000101093000000"},
      {yearOnly, "2026", "20260101000000000"},
      {monthOnly, "03", "20000301000000000"},
      {fileNameTimestamp, "2026-03-01_093005", "20260301093005000"},
      {preciseTimestamp, "20260301093005042", "20260301093005042"},
      {exportDateTime, "2026-03-01 09:30", "20260301093000000"},
      {chineseDateTime, "2026.3.1 9:30", "20260301093000000"},
  };
  const Moment moment =
      LocalTime{.year = 2026, .month = 3, .day = 1, .hour = 9, .minute = 30, .second = 5}.moment() +
      std::chrono::microseconds(42999);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(c.formatter.format(moment), c.text);
    const auto read = c.formatter.parse(c.text);
    ASSERT_TRUE(read);
    EXPECT_EQ(preciseTimestamp.format(*read), c.moment);
  }
  EXPECT_EQ(chineseDateTime.format(isoDateTime.parse("2026-12-31 23:59:00").value()),
            "2026.12.31 23:59");
}

TEST(DateFormattersTest, RefusesWhatDoesNotPrintBack) {
  const std::pair<const SafeDateFormatter&, std::vector<const char*>> cases[] = {
      {isoDate,
       {"", "2026-3-1", "2026-02-30", "2026-13-01", "2026-00-10", "2026-03-01x", " 2026-03-01"}},
      {isoDateTime, {"2026-03-01 09:30", "2026-03-01 24:00:00"}},
      {timeOnly, {"09:60", "9:30", "-9:30"}},
      {chineseDateTime, {"2026.03.01 9:30"}},
      {preciseTimestamp, {"2026030109300542"}},
  };
  for (const auto& [formatter, texts] : cases)
    for (const char* text : texts) EXPECT_FALSE(formatter.parse(text)) << text;
  const std::string skipped = inZone("America/New_York", [] {
    return std::string(isoDateTime.parse("2026-03-08 02:30:00") ? "a time" : "none");
  });
  EXPECT_EQ(skipped, "none");
}

TEST(DateFormattersTest, Timestamps) {
  for (const auto& [zone, expected] :
       rowsOf<2>("Asia/Shanghai¦2026-03-01T09:30:05+08:00¦Europe/London¦2026-03-01T01:30:05Z¦"
                 "Asia/Kathmandu¦2026-03-01T07:15:05+05:45¦"
                 "America/St_Johns¦2026-02-28T22:00:05-03:30"))
    EXPECT_EQ(inZone(zone.c_str(), [] { return timestamp(utc(1772328605)); }), expected);
}

}  // namespace
}  // namespace nomely::test
