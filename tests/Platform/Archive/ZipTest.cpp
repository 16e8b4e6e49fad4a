
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/Archive/ZipReader.h"
#include "Platform/Archive/ZipWriter.h"
#include "Support/ErrorKind.h"
#include "Support/Matchers.h"
#include "Support/MemoryFileSystem.h"
#include "Support/ProgramRun.h"

namespace nomely::test {
namespace {

using Contents = std::map<std::string, std::string>;

constexpr Moment modified{std::chrono::seconds(1'700'000'001)};

// Names that are no UTF-8, contents that deflate well, badly, and in many pieces.
Contents samples() {
  std::string noise(600'000, '\0');
  std::uint32_t state = 1;
  for (char& byte : noise) byte = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
  return {{"日记/", ""},
          {"日记/空.md", ""},
          {"日记/001.md", std::string(5'000, 'a') + "文字"},
          {"latin\xe9.txt", "short"},
          {"noise.bin", noise},
          {"long.txt", std::string(3'000'000, 'x') + noise}};
}

std::string zipped(const Contents& contents, std::size_t heldAtMost) {
  TemporaryFolder folder(quickParent());
  const fs::path path = folder.path() / "a.zip";
  const std::unique_ptr<File> file =
      posixFileSystem().open(path, FileSystem::OpenMode::createNew, LinkPolicy::noFollow);
  ZipWriter writer(*file);
  for (const auto& [name, bytes] : contents) {
    const ZipWriter::Item item{name, name.ends_with('/') ? S_IFDIR | 0750U : S_IFREG | 0640U,
                               modified};
    const auto compression =
        name.ends_with(".bin") ? ZipWriter::Compression::store : ZipWriter::Compression::deflate;
    if (name.ends_with('/'))
      writer.addFolder(item);
    else if (bytes.size() <= heldAtMost)
      writer.add(item, bytes, compression);
    else
      writer.add(
          item, bytes.size(),
          [&, &bytes = bytes](const ZipWriter::Sink& sink) {
            for (std::size_t i = 0; i < bytes.size(); i += 70'000)
              sink(std::string_view(bytes).substr(i, 70'000));
          },
          compression);
  }
  writer.finish();
  return readFile(path);
}

Contents contentsOf(FileSystem& files, const fs::path& path) {
  const ZipReader reader(files, path);
  reader.checkStructure({});
  Contents contents;
  ZipReader::Cursor cursor(reader);
  for (const ZipEntry* entry : reader.inFileOrder()) {
    std::string& bytes = contents[entry->name];
    cursor.read(*entry, [&](std::string_view piece) { bytes += piece; });
  }
  return contents;
}

TEST(ZipTest, InfoZipReadsWhatThisWritesAndTheOtherWayRound) {
  for (const std::size_t heldAtMost : {std::size_t{1} << 30, std::size_t{0}}) {
    TemporaryFolder folder(quickParent());
    writeFile(folder.path() / "ours.zip", zipped(samples(), heldAtMost));
    EXPECT_EQ(contentsOf(posixFileSystem(), folder.path() / "ours.zip"), samples());
    const ProgramResult result = runProgram(
        "/bin/sh", folder.path(),
        {.arguments =
             {"-c",
              "cd && unzip -tqq ours.zip && zip -qT ours.zip && unzip -q ours.zip -d out && "
              "stat -c '%a %Y' out/日记/001.md out/日记 && cd out && zip -qr ../theirs.zip . && "
              "zip -qr -fd - . | cat > ../streamed.zip && zip -q0r -fz ../wide.zip ."},
         .environment = {{"LC_ALL", "C.UTF-8"}}});
    EXPECT_EQ(result.output, "640 1700000001\n750 1700000001\n") << result.errors;
    ASSERT_EQ(result.status, 0) << result.errors;
    for (const char* name : {"theirs.zip", "streamed.zip", "wide.zip"})
      EXPECT_EQ(contentsOf(posixFileSystem(), folder.path() / name), samples()) << name;
    const ZipReader theirs(posixFileSystem(), folder.path() / "theirs.zip");
    EXPECT_EQ(theirs.find("日记/001.md")->mode, S_IFREG | 0640U);
    EXPECT_EQ(theirs.find("日记/001.md")->modified, modified);
    EXPECT_EQ(theirs.find("日记"), nullptr);
  }
}

// The same archive with some of its bytes changed, in memory.
std::optional<Contents> readAs(const std::string& bytes) {
  MemoryFileSystem files("/disk", {{"a.zip", bytes}});
  try {
    return contentsOf(files, "/disk/a.zip");
  } catch (const ZipError&) {
    return std::nullopt;
  }
}

TEST(ZipTest, DamagedArchivesAreRefusedOrGiveTheSame) {
  const Contents small{{"a/", ""}, {"a/001.md", "Some text, some text."}, {"b.bin", "stored"}};
  for (const std::size_t heldAtMost : {std::size_t{100}, std::size_t{0}}) {
    const std::string whole = zipped(small, heldAtMost);
    ASSERT_EQ(readAs(whole), small);
    for (std::size_t length = 0; length < whole.size(); ++length)
      EXPECT_EQ(readAs(whole.substr(0, length)), std::nullopt) << length;
    EXPECT_EQ(readAs("#!" + whole), std::nullopt);
    for (std::size_t at = 0; at < whole.size(); ++at)
      for (int bit = 0; bit < 8; ++bit) {
        std::string flipped = whole;
        flipped[at] = static_cast<char>(flipped[at] ^ (1 << bit));
        EXPECT_EQ(readAs(flipped).value_or(small), small) << "byte " << at << " bit " << bit;
      }
  }
}

// Takes long stretches for zeros, and leaves a hole for them.
class SparseFile final : public File {
 public:
  explicit SparseFile(const fs::path& path) : file_(::creat(path.c_str(), 0600)) {}
  ~SparseFile() override { ::close(file_); }
  SparseFile(const SparseFile&) = delete;
  SparseFile& operator=(const SparseFile&) = delete;
  std::size_t write(std::string_view bytes) override {
    if (bytes.size() >= std::size_t{1} << 24)
      ::lseek(file_, static_cast<off_t>(bytes.size()), SEEK_CUR);
    else
      EXPECT_EQ(::write(file_, bytes.data(), bytes.size()), bytes.size());
    return bytes.size();
  }
  std::size_t read(std::span<char>) override { return 0; }
  std::size_t readAt(std::uint64_t, std::span<char>) override { return 0; }
  void sync() override {}
  FileAttributes attributes() override { return {}; }
  void copyContents(File&) override {}
  bool shareContents(File&) override { return false; }
  void copyMetadata(File&) override {}
  void setPermissions(unsigned) override {}
  void setModified(Moment) override {}

 private:
  int file_;
};

TEST(ZipTest, MoreThanFourGigabytesAndMoreEntriesThanTwoBytesCount) {
  TemporaryFolder folder(quickParent());
  const fs::path path = folder.path() / "wide.zip";
  const std::string zeros(std::size_t{1} << 24, '\0');
  constexpr std::uint64_t size = (std::uint64_t{1} << 32) + (1 << 24);
  {
    SparseFile file(path);
    ZipWriter writer(file);
    writer.add(
        {"zeros.bin", S_IFREG, modified}, size,
        [&](const ZipWriter::Sink& sink) {
          for (std::uint64_t i = 0; i < size; i += zeros.size()) sink(zeros);
        },
        ZipWriter::Compression::store);
    for (int i = 0; i < 70'000; ++i)
      writer.add({fmt::format("{}.md", i), S_IFREG, modified}, std::to_string(i),
                 ZipWriter::Compression::deflate);
    writer.finish();
  }
  const ZipReader reader(posixFileSystem(), path);
  reader.checkStructure({});
  ASSERT_EQ(reader.entries().size(), 70'001);
  EXPECT_EQ(reader.entries()[0].size, size);
  std::uint64_t given = 0;
  reader.read(reader.entries()[0], [&](std::string_view piece) { given += piece.size(); });
  EXPECT_EQ(given, size);
  EXPECT_EQ(reader.contents(*reader.find("69999.md"), 5), "69999");
  EXPECT_FAILURE(ZipError, tooLarge, reader.contents(*reader.find("69999.md"), 4));
  const ProgramResult result =
      runProgram("/usr/bin/unzip", folder.path(), {.arguments = {"-p", path.string(), "69999.md"}});
  EXPECT_EQ(result.output, "69999") << result.errors;
}

}  // namespace
}  // namespace nomely::test
