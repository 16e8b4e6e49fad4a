#include <fstream>

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
  const struct {
    const char* text;
    std::optional<std::int64_t> expected;
  } cases[] = {
      {"7", 7},
      {"007", 7},
      {"+7", 7},
      {"-3", -3},
      {"-0", 0},
      {"9223372036854775807", INT64_MAX},
      {"-9223372036854775808", INT64_MIN},
      {"9223372036854775808", {}},
      {"", {}},
      {"+", {}},
      {"-", {}},
      {"+-7", {}},
      {"++7", {}},
      {" 7", {}},
      {"7 ", {}},
      {"7a", {}},
      {"0x7", {}},
      {"1.5", {}},
      {"７", {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(parseDecimal(c.text), c.expected);
    EXPECT_EQ(DiskPaths::seqNumber(std::string(c.text) + ".md"), c.expected);
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
  const struct {
    const char* name;
    std::string_view bytes;
    std::optional<std::string> expected;
  } cases[] = {
      {"JPEG", "\xFF\xD8\xFF\xE0........", "jpg"},
      {"JPEG of three bytes", "\xFF\xD8\xFF", "jpg"},
      {"JPEG of 11 bytes", "\xFF\xD8\xFF\xE0.......", "jpg"},
      {"third byte too small", "\xFF\xD8\xFE\xE0........", {}},
      {"PNG", "\x89PNG\r\n\x1A\n....", "png"},
      {"short PNG", "\x89PNG", "png"},
      {"PNG cut off", "\x89PN", {}},
      {"GIF", "GIF89a......", "gif"},
      {"short GIF", "GIF", "gif"},
      {"another GIF, long", "GIF7........", {}},
      {"another GIF, short", "GIF7", "gif"},
      {"WebP", "RIFF....WEBP", "webp"},
      {"WebP of 11 bytes", "RIFF....WEB", {}},
      {"RIFF of another kind", "RIFF....WAVE", {}},
      {"MPEG-4",
       "\0\0\0\x20"
       "ftypM4A "sv,
       "m4a"},
      {"MPEG-4 of 11 bytes",
       "\0\0\0\x20"
       "ftypM4A"sv,
       {}},
      {"Ogg", "OggS........", "ogg"},
      {"short Ogg", "OggS", {}},
      {"text", "Dear diary, today", {}},
      {"empty", "", {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(FileTypeDetector::magicExtension(c.bytes), c.expected);
  }
}

}  // namespace
}  // namespace nomely::test
