#include <gtest/gtest.h>

#include "Core/Extensions/AttachmentNamingKit.h"
#include "Core/Extensions/PathNames.h"
#include "Core/Extensions/TextNumbers.h"
#include "Core/Storage/DiskPaths.h"
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

}  // namespace
}  // namespace nomely::test
