#include "Core/Extensions/AttachmentNamingKit.h"
#include "Core/Extensions/DateFormatters.h"
#include "Core/Extensions/PathNames.h"
#include "Core/Extensions/TextNumbers.h"
#include "Core/Storage/DiskPaths.h"
#include "Platform/Time/LocalTime.h"
#include "Support/ForkedRun.h"
#include "Support/RandomText.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

using namespace std::string_view_literals;

TEST(PathNamesTest, ComponentsAndExtensions) {
  constexpr std::string_view rows =
      "a.JPG¦a.JPG¦jpg¦a¦/d.x/a.tar.gz¦a.tar.gz¦gz¦/d.x/a.tar¦/d.x/a¦a¦¦/d.x/a¦"
      "d/.hidden¦.hidden¦¦d/.hidden¦.hidden.md¦.hidden.md¦md¦.hidden¦a.¦a.¦¦a.¦a..md¦a..md¦md¦a.¦"
      "¦¦¦¦d/¦d¦¦d/¦/¦¦¦/¦a.É¦a.É¦É¦a";
  for (const auto& [path, component, extension, stem] : rowsOf<4>(rows)) {
    EXPECT_EQ(lastComponent(path), component);
    EXPECT_EQ(lowerCaseExtension(path), extension);
    EXPECT_EQ(withoutExtension(path), stem);
  }
}

TEST(TextNumbersTest, DecimalIntegersAndMemoFileNames) {
  for (const auto& [text, value] :
       rowsOf<2>("007¦7¦+7¦7¦-3¦-3¦-0¦0¦9223372036854775807¦9223372036854775807¦"
                 "-9223372036854775808¦-9223372036854775808")) {
    EXPECT_EQ(parseDecimal(text), std::stoll(value));
    EXPECT_EQ(DiskPaths::seqNumber(text + ".md"), std::stoll(value));
  }
  for (const std::string& text : piecesOf("9223372036854775808¦¦+¦-¦+-7¦++7¦ 7¦7 ¦7a¦0x7¦1.5¦７")) {
    EXPECT_FALSE(parseDecimal(text)) << text;
    EXPECT_FALSE(DiskPaths::seqNumber(text + ".md")) << text;
  }
  for (const char* name : {"7.MD", "7.mdx", "7md", "7", "7.md.bak", "md"})
    EXPECT_FALSE(DiskPaths::seqNumber(name)) << name;
  EXPECT_EQ(DiskPaths::memoFileName(7) + DiskPaths::memoFileName(1000), "007.md1000.md");
}

TEST(AttachmentNamingKitTest, DisplayNames) {
  EXPECT_EQ(AttachmentNamingKit::displayName("a1.mov", {}), "MOV 文件");
  for (const auto& [filename, original, expected] : rowsOf<3>(
           "a1.mov¦¦MOV 文件¦a1¦¦文件¦a.png¦夏天.tar.gz¦夏天.tar¦a.png¦夏天¦夏天¦a.png¦.png¦.png"))
    EXPECT_EQ(AttachmentNamingKit::displayName(filename, original), expected);
}

TEST(AttachmentNamingKitTest, SuggestedDownloadNames) {
  for (const auto& [filename, title, expected] :
       rowsOf<3>("ab.png¦日记：3/1¦日记-3-1.png¦ab.png¦a:b::c¦a-b--c.png¦ab.png¦¦ab.png¦ab¦题¦题¦"
                 "ab.PNG¦题.png¦题.png.PNG"))
    EXPECT_EQ(AttachmentNamingKit::suggestedDownloadName(filename, title), expected);
}

TEST(AttachmentNamingKitTest, IconsAndColours) {
  for (const auto& [name, icon, color] :
       rowsOf<3>("a.PDF¦doc.richtext¦#FF4D4F¦a.docx¦doc.text¦#2F54EB¦a.OGG¦waveform¦#13C2C2¦"
                 "a.htm¦doc¦#FA541C¦a.pdfx¦doc¦#8C8C8C")) {
    EXPECT_EQ(AttachmentNamingKit::fileIcon(name), icon);
    EXPECT_EQ(AttachmentNamingKit::typeColorHex(name), color);
    EXPECT_EQ(AttachmentNamingKit::linkIcon("https://h.zip/d/" + name + "?q=a.mp3#b.md"), icon);
  }
  for (const char* name : {"", "pdf", "a.", "a.zip rar", "a.xls/b"})
    EXPECT_EQ(AttachmentNamingKit::fileIcon(name), "doc") << name;
  EXPECT_EQ(AttachmentNamingKit::linkIcon("https://example.zip"), "doc") << "a host has no type";
}

TEST(AttachmentNamingKitTest, ByteCounts) {
  for (const auto& [bytes, expected] :
       rowsOf<2>("0¦0 字节¦999¦999 字节¦1000¦1.0 KB¦999949¦999.9 KB¦999950¦1.0 MB¦1234567¦1.2 MB¦"
                 "18446744073709551615¦18.4 EB"))
    EXPECT_EQ(AttachmentNamingKit::byteCountLabel(std::stoull(bytes)), expected);
  const TemporaryFolder folder;
  writeFile(folder.path() / "a", "12345");
  EXPECT_EQ(AttachmentNamingKit::fileSizeLabel(folder.path() / "a"), "5 字节");
  EXPECT_FALSE(AttachmentNamingKit::fileSizeLabel(folder.path() / "none"));
}

TEST(FileTypeDetectorTest, FirstBytes) {
  for (const auto& [bytes, expected] : {std::pair("\xFF\xD8\xFF\xE0........"sv, "jpg"),
                                        {"\xFF\xD8\xFF"sv, "jpg"},
                                        {"\x89PNG\r\n\x1A\n...."sv, "png"},
                                        {"\x89PNG"sv, "png"},
                                        {"GIF89a......"sv, "gif"},
                                        {"GIF"sv, "gif"},
                                        {"RIFF....WEBP"sv, "webp"},
                                        {"\0\0\0 ftypM4A "sv, "m4a"},
                                        {"OggS........"sv, "ogg"}})
    EXPECT_EQ(FileTypeDetector::magicExtension(bytes), expected) << testing::PrintToString(bytes);
  for (const std::string_view bytes :
       {"\xFF\xD8\xFE\xE0........"sv, "\x89PN"sv, "GIF7........"sv, "RIFF....WEB"sv,
        "RIFF....WAVE"sv, "\0\0\0 ftypM4A"sv, "OggS"sv, "Dear diary, today"sv, ""sv})
    EXPECT_FALSE(FileTypeDetector::magicExtension(bytes)) << testing::PrintToString(bytes);
}

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
