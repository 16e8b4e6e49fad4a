#include <fstream>
#include <map>

#include <gtest/gtest.h>

#include "Core/Extensions/AttachmentNamingKit.h"
#include "Core/Extensions/PathNames.h"
#include "Core/Extensions/TextNumbers.h"
#include "Core/Storage/DiskPaths.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

using namespace std::string_view_literals;

TEST(PathNamesTest, ComponentsAndExtensions) {
  const struct {
    const char* path;
    const char* component;
    const char* extension;
    const char* stem;  // the path without extension
  } cases[] = {
      {"a.JPG", "a.JPG", "jpg", "a"},
      {"/d.x/a.tar.gz", "a.tar.gz", "gz", "/d.x/a.tar"},
      {"/d.x/a", "a", "", "/d.x/a"},
      {".hidden", ".hidden", "", ".hidden"},
      {"d/.hidden", ".hidden", "", "d/.hidden"},
      {".hidden.md", ".hidden.md", "md", ".hidden"},
      {"a.", "a.", "", "a."},
      {"a..md", "a..md", "md", "a."},
      {"日记.Md", "日记.Md", "md", "日记"},
      {"", "", "", ""},
      {"d/", "d", "", "d/"},
      {"/", "", "", "/"},
      {"a.É", "a.É", "É", "a"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.path);
    EXPECT_EQ(lastComponent(c.path), c.component);
    EXPECT_EQ(lowerCaseExtension(c.path), c.extension);
    EXPECT_EQ(withoutExtension(c.path), c.stem);
  }
}

TEST(TextNumbersTest, DecimalIntegersAndMemoFileNames) {
  const std::map<std::string, std::int64_t> numbers{{"7", 7},
                                                    {"007", 7},
                                                    {"+7", 7},
                                                    {"-3", -3},
                                                    {"-0", 0},
                                                    {"9223372036854775807", INT64_MAX},
                                                    {"-9223372036854775808", INT64_MIN}};
  for (const auto& [text, expected] : numbers) {
    EXPECT_EQ(parseDecimal(text), expected) << text;
    EXPECT_EQ(DiskPaths::seqNumber(text + ".md"), expected) << text;
  }
  for (const std::string text :
       {"9223372036854775808", "", "+", "-", "+-7", "++7", " 7", "7 ", "7a", "0x7", "1.5", "７"}) {
    EXPECT_FALSE(parseDecimal(text)) << text;
    EXPECT_FALSE(DiskPaths::seqNumber(text + ".md")) << text;
  }
  for (const char* name : {"7.MD", "7.mdx", "7md", "7", "7.md.bak", "md"}) {
    SCOPED_TRACE(name);
    EXPECT_FALSE(DiskPaths::seqNumber(name));
  }
  EXPECT_EQ(DiskPaths::memoFileName(7), "007.md");
  EXPECT_EQ(DiskPaths::memoFileName(1000), "1000.md");
}

TEST(AttachmentNamingKitTest, DisplayNames) {
  const struct {
    const char* filename;
    std::optional<std::string> original;
    const char* expected;
  } cases[] = {
      {"a1b2c3d4.mov", {}, "MOV 文件"}, {"a1b2c3d4.mov", "", "MOV 文件"},
      {"a1b2c3d4", {}, "文件"},         {"a.png", "夏天.tar.gz", "夏天.tar"},
      {"a.png", "夏天", "夏天"},        {"a.png", ".png", ".png"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.expected);
    EXPECT_EQ(AttachmentNamingKit::displayName(c.filename, c.original), c.expected);
  }
}

TEST(AttachmentNamingKitTest, SuggestedDownloadNames) {
  const struct {
    const char* filename;
    const char* title;
    const char* expected;
  } cases[] = {
      {"ab.png", "日记：3/1", "日记-3-1.png"},
      {"ab.png", "a:b::c", "a-b--c.png"},
      {"ab.png", "", "ab.png"},
      {"ab", "题", "题"},
      {"ab.PNG", "题.png", "题.png.PNG"},
      {"ab.png", "/", "-.png"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.expected);
    EXPECT_EQ(AttachmentNamingKit::suggestedDownloadName(c.filename, c.title), c.expected);
  }
}

TEST(AttachmentNamingKitTest, IconsAndColours) {
  const struct {
    const char* extensions;
    const char* icon;
    const char* color;
  } rows[] = {
      {"pdf PDF", "doc.richtext", "#FF4D4F"},
      {"doc docx", "doc.text", "#2F54EB"},
      {"xls xlsx csv", "tablecells", "#52C41A"},
      {"ppt pptx", "rectangle.on.rectangle", "#FA8C16"},
      {"xmind", "brain.head.profile", "#8C8C8C"},
      {"zip rar 7z", "archivebox", "#722ED1"},
      {"mp3 wav m4a aac OGG", "waveform", "#13C2C2"},
      {"m4v", "play.rectangle", "#EB2F96"},
      {"md rtf", "doc.plaintext", "#8C8C8C"},
      {"html htm", "doc", "#FA541C"},
      {"json yaml yml", "doc", "#1677FF"},
      {"png x pd pdfx mov", "doc", "#8C8C8C"},
  };
  for (const auto& row : rows) {
    std::istringstream extensions(row.extensions);
    for (std::string extension; extensions >> extension;) {
      SCOPED_TRACE(extension);
      const std::string name = "a." + extension;
      EXPECT_EQ(AttachmentNamingKit::fileIcon(name), row.icon);
      EXPECT_EQ(AttachmentNamingKit::typeColorHex(name), row.color);
      EXPECT_EQ(AttachmentNamingKit::linkIcon("https://h.zip/d/" + name + "?q=a.mp3#b.md"),
                row.icon);
    }
  }
  for (const char* name : {"", "pdf", "a.", "a.zip rar", "a.xls/b"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(AttachmentNamingKit::fileIcon(name), "doc");
  }
  EXPECT_EQ(AttachmentNamingKit::linkIcon("https://example.zip"), "doc") << "a host has no type";
}

TEST(AttachmentNamingKitTest, ByteCounts) {
  const struct {
    std::uint64_t bytes;
    const char* expected;
  } cases[] = {
      {0, "0 字节"},       {999, "999 字节"},     {1000, "1.0 KB"},        {999'949, "999.9 KB"},
      {999'950, "1.0 MB"}, {1'234'567, "1.2 MB"}, {UINT64_MAX, "18.4 EB"},
  };
  for (const auto& c : cases) EXPECT_EQ(AttachmentNamingKit::byteCountLabel(c.bytes), c.expected);
  const TemporaryFolder folder;
  writeFile(folder.path() / "a", "12345");
  EXPECT_EQ(AttachmentNamingKit::fileSizeLabel(folder.path() / "a"), "5 字节");
  EXPECT_FALSE(AttachmentNamingKit::fileSizeLabel(folder.path() / "none"));
}

TEST(FileTypeDetectorTest, FirstBytes) {
  const std::pair<std::string_view, const char*> kinds[] = {{"\xFF\xD8\xFF\xE0........", "jpg"},
                                                            {"\xFF\xD8\xFF", "jpg"},
                                                            {"\x89PNG\r\n\x1A\n....", "png"},
                                                            {"\x89PNG", "png"},
                                                            {"GIF89a......", "gif"},
                                                            {"GIF", "gif"},
                                                            {"GIF7", "gif"},
                                                            {"RIFF....WEBP", "webp"},
                                                            {"\0\0\0 ftypM4A "sv, "m4a"},
                                                            {"OggS........", "ogg"}};
  for (const auto& [bytes, expected] : kinds)
    EXPECT_EQ(FileTypeDetector::magicExtension(bytes), expected) << testing::PrintToString(bytes);
  for (const std::string_view bytes :
       {"\xFF\xD8\xFE\xE0........"sv, "\x89PN"sv, "GIF7........"sv, "RIFF....WEB"sv,
        "RIFF....WAVE"sv, "\0\0\0 ftypM4A"sv, "OggS"sv, "Dear diary, today"sv, ""sv})
    EXPECT_FALSE(FileTypeDetector::magicExtension(bytes)) << testing::PrintToString(bytes);
}

}  // namespace
}  // namespace nomely::test
