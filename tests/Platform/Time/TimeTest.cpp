#include <cstdlib>

#include <fmt/format.h>

#include "Platform/Time/Day.h"
#include "Platform/Time/LocalTime.h"
#include "Support/ForkedRun.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

Moment utc(long long secondsSince1970) {
  return Moment(std::chrono::seconds(secondsSince1970));
}

std::string show(Moment moment) {
  const LocalTime at = LocalTime::of(moment);
  return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02} {:+}", at.year, at.month, at.day, at.hour,
                     at.minute, at.second, at.offset);
}

TEST(DayTest, StrictParse) {
  for (const char* day : {"2026-03-01", "0001-01-01", "9999-12-31", "2024-02-29", "2000-02-29"})
    EXPECT_EQ(Day::parse(day).value().string(), day);
  for (const char* none : {"2026-02-29", "1900-02-29", "2026-04-31", "2026-13-01", "2026-00-10",
                           "2026-01-00", "0000-01-01", "2026-3-5", "2026-3-05", "26-03-01",
                           "12026-03-01", "2026/03/01", "2026-03-01 ", " 2026-03-01", "2026-03-0x",
                           "+026-03-01", "2026--3-01", "２０２６-03-01", ""})
    EXPECT_FALSE(Day::parse(none)) << none;
}

TEST(DayTest, CountingAndOrder) {
  const Day day = Day::parse("2024-02-28").value();
  EXPECT_EQ(day.plusDays(2).string(), "2024-03-01");
  EXPECT_EQ(day.plusDays(-59).string(), "2023-12-31");
  EXPECT_LT(day, day.plusDays(1));
  EXPECT_EQ(Day::from(2024, 2, 28), day);
  EXPECT_FALSE(Day::from(2026, 257, 1));
  EXPECT_FALSE(Day::from(2026, 1, 257));
  EXPECT_FALSE(Day::from(10000, 1, 1));
}

TEST(LocalTimeTest, Zones) {
  const std::tuple<const char*, long long, const char*> cases[] = {
      {"UTC", -1, "1969-12-31 23:59:59 +0"},
      {"Asia/Kolkata", 1772328605, "2026-03-01 07:00:05 +19800"},
      // The last second of winter, the first of summer, the hour before the repeated one.
      {"America/New_York", 1772953199, "2026-03-08 01:59:59 -18000"},
      {"America/New_York", 1772953200, "2026-03-08 03:00:00 -14400"},
      {"America/New_York", 1793508300, "2026-11-01 00:45:00 -14400"},
  };
  for (const auto& [zone, seconds, expected] : cases)
    EXPECT_EQ(inZone(zone,
                     [at = utc(seconds)] {
                       EXPECT_EQ(LocalTime::of(at).moment(), at);
                       return show(at);
                     }),
              expected);
  const Moment fraction = utc(-1) + std::chrono::microseconds(250999);
  EXPECT_EQ(LocalTime::of(fraction).millisecond, 250);
  EXPECT_EQ(LocalTime::of(fraction).moment(), utc(-1) + std::chrono::milliseconds(250));
}

// Also where a clock change takes midnight away or repeats it.
TEST(LocalTimeTest, FirstMomentsOfDays) {
  for (const auto& [zone, day, expected] :
       rowsOf<3>("America/New_York¦2026-03-08¦2026-03-08 00:00:00 -18000¦"
                 "America/New_York¦2026-11-01¦2026-11-01 00:00:00 -14400¦"
                 "America/Sao_Paulo¦2018-11-04¦2018-11-04 01:00:00 -7200¦"
                 "America/Sao_Paulo¦2018-02-18¦2018-02-18 00:00:00 -10800¦"
                 "America/St_Johns¦2010-11-07¦2010-11-07 00:00:00 -9000"))
    EXPECT_EQ(inZone(zone.c_str(), [&] { return show(Day::parse(day).value().start()); }),
              expected);
}

TEST(LocalTimeTest, ZoneStaysAsItWasWhenFirstAsked) {
  const std::string text = inZone("Asia/Shanghai", [] {
    const std::string first = show(utc(0));
    ::setenv("TZ", "America/New_York", 1);
    const Moment start = Day::of(utc(0)).start();
    return first + ", " + show(start) + ", " + show(utc(0));
  });
  EXPECT_EQ(text,
            "1970-01-01 08:00:00 +28800, 1970-01-01 00:00:00 +28800, 1970-01-01 08:00:00 +28800");
}

}  // namespace
}  // namespace nomely::test
