#include "Core/Storage/ConfigSecrets.h"
#include "Core/Storage/DisplayConfig.h"
#include "Core/Storage/MemoTemplate.h"
#include "Core/Storage/SecretBlanking.h"
#include "Core/Storage/TagConfigStore.h"
#include "Platform/Files/FileError.h"
#include "Platform/Settings/MemorySecrets.h"
#include "Support/ErrorKind.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

// One field of each kind.
struct Sample {
  static constexpr std::string_view fileName = "sample.yaml";

  std::string name = "默认";
  std::string apiKey = {};
  std::string token = {};
  std::optional<std::string> url = {};
  bool on = false;
  double size = 1.5;
  std::optional<std::int64_t> count = {};

  friend bool operator==(const Sample&, const Sample&) = default;
};

ConfigFields configFields(Sample& sample) {
  using enum ConfigField::Presence;
  return {{.key = "name", .target = &sample.name},
          {.key = "apiKey", .target = &sample.apiKey, .presence = defaulted, .account = "a"},
          {.key = "token", .target = &sample.token, .presence = defaulted, .account = "t"},
          {.key = "url", .target = &sample.url, .presence = optional},
          {.key = "group.active", .target = &sample.on},
          {.key = "group.size", .target = &sample.size, .presence = defaulted},
          {.key = "count", .target = &sample.count, .presence = optional}};
}

class ConfigStoreTest : public StoreTest {
 protected:
  void write(std::string_view name, const std::string& content) const {
    writeFile(config / name, content);
  }
  [[nodiscard]] std::string read(std::string_view name) const { return readFile(config / name); }
  [[nodiscard]] std::vector<fs::path> copies() const {
    std::vector<fs::path> found;
    for (const auto& entry : fs::directory_iterator(config))
      if (entry.path().string().find(".corrupt-") != std::string::npos)
        found.push_back(entry.path());
    return found;
  }
  [[nodiscard]] static fs::perms permissionsOf(const fs::path& file) {
    return fs::status(file).permissions();
  }

  fs::path config = folder.path() / "_config";
  ConfigStore configs{context};
  MemorySecrets backend;
  KeychainStore keychain{backend};
  ConfigSecrets secrets{configs, keychain};
};

constexpr fs::perms ownerOnly = fs::perms::owner_read | fs::perms::owner_write;

TEST_F(ConfigStoreTest, RecordsAsTheyAreWritten) {
  EXPECT_FALSE(configs.load<Sample>(Sample::fileName));
  Sample sample{.name = "a: b", .apiKey = "never written", .url = "", .on = true, .count = 7};
  configs.save(sample, Sample::fileName);
  EXPECT_EQ(read(Sample::fileName),
            "name: 'a: b'\napiKey: ''\ntoken: ''\nurl: ''\ngroup:\n  active: true\n  size: "
            "1.5\ncount: 7\n");
  sample.apiKey.clear();
  EXPECT_EQ(configs.load<Sample>(Sample::fileName), sample);
  configs.save(DisplayConfig(), "d.yaml");
  EXPECT_EQ(read("d.yaml"),
            "tagFontSize: 12.0\nbodyFontSize: 14.0\nseriesNumberAscending: false\n"
            "defaultShowsSeriesNumber: false\nlinkDisplayMode: text\n");
}

TEST_F(ConfigStoreTest, FilesWrittenByHand) {
  write("d.yaml", "# 字号\nbodyFontSize: \"15\"\ntagFontSize: 11\nunknown: [1]\n");
  EXPECT_EQ(configs.load<DisplayConfig>("d.yaml"),
            (DisplayConfig{.tagFontSize = 11, .bodyFontSize = 15}));
  write("m.yaml", "{name: 日报, content: ''}");
  MemoTemplate loaded = configs.load<MemoTemplate>("m.yaml").value();
  EXPECT_EQ(loaded, (MemoTemplate{.id = loaded.id, .name = "日报"}));
  const std::string sample = "name: x\ngroup: {active: true}\n";
  for (const auto& [content, fault] : {
           std::pair(sample + "url: ~\ncount:\n", "nothing thrown"),
           {"name: x\n", "缺少 group.active"},
           {"name: x\ngroup:\n  active: maybe\n", "第 3 行：group.active 应当是 true 或 false"},
           {sample + "count: many\n", "第 3 行：count 应当是整数"},
           {"name: x\ngroup: {active: true, size: .inf}", "group.size 应当是数字"},
           {sample + "name: y\n", "name 出现了两次"},
           {"name: [x\n", "第 "},
           {"", "什么都没有"},
           {"- x\n", "文件 应当是"},
           {"name: \xFF\n", "UTF-8"},
       }) {
    SCOPED_TRACE(content);
    write(Sample::fileName, content);
    EXPECT_THAT(messageOf<ConfigError>([&] { (void)configs.load<Sample>(Sample::fileName); }),
                HasSubstr(fault));
    EXPECT_EQ(read(Sample::fileName), content) << "a damaged file stays";
  }
  write(TagConfig::fileName, "colors: {}\nemojis: {}\nsortMode: random\n");
  EXPECT_THROW((void)configs.load<TagConfig>(TagConfig::fileName), ConfigError);
  EXPECT_EQ(TagConfigStore(configs).config().get(), TagConfig());
}

TEST_F(ConfigStoreTest, OneCopyForEachDistinctFault) {
  const auto fail = [&](const std::string& content) {
    write("d.yaml", content);
    EXPECT_THROW((void)configs.load<DisplayConfig>("d.yaml"), ConfigError);
  };
  fail("tagFontSize: 12\n");
  fail("tagFontSize: 12\n");
  clock.advance(std::chrono::seconds(5));
  fail("tagFontSize: 12\n");
  EXPECT_EQ(copies().size(), 1U);
  EXPECT_THAT(copies().front().filename().string(), MatchesRegex("d.yaml.corrupt-[0-9]+"));
  EXPECT_EQ(permissionsOf(copies().front()), ownerOnly);
  fail("tagFontSize: 13\n");
  fail("tagFontSize: 14\n");
  EXPECT_EQ(copies().size(), 3U) << "also within one second";
}

TEST_F(ConfigStoreTest, DamagedFilesShowNoSecretInTheirCopies) {
  Sample sample;
  const ConfigFields fields = configFields(sample);
  for (const auto& [text, left] : {
           std::pair("apiKey sk-12\nname: x\n", "name: x"),
           {"name: x\napiKey: sk-12", "name: x"},
           {"api_key: 'sk-12\n  sk-12\n\nsk-12'\nname: [\n", "name: ["},
           {"\"apiKey\": \"sk-12\nname: x\n", "name: x"},
           {"apiKey: |\n  sk-12\n  name: sk-12\nname: x\n", "name: x"},
           {"apiKey:\nsk-12\nname: x\n", "name: x"},
           {"{name: x, APIKEY: sk-12, token: sk-12}", "{name: x, APIKEY"},
           {"x: &k sk-12\napiKey: *k\n", "x: &k "},
           {"a:\n  token: >-\n    sk-12\n  b: x\n", "  b: x"},
           {"apiKey：sk-12\r\nname: x\r\n", "name: x"},
           {"name: x\ntoken: sk-12\xFF\n", "name: x"},
       }) {
    SCOPED_TRACE(text);
    const SecretBlanking::Blanked blanked = SecretBlanking::withoutSecrets(text, fields);
    EXPECT_THAT(blanked.text, AllOf(Not(HasSubstr("sk-12")), HasSubstr(left)));
    EXPECT_TRUE(blanked.heldSecrets);
  }
  // Every slip of the hand outside the names.
  const std::string whole = "name: x\napiKey: sk-12\ntoken: sk-12\nurl: y\n";
  for (std::size_t at = 0; at < whole.size(); ++at)
    for (const char* slip : {"", "\n", ":", "\"", "'", "{", "#", "|", " ", "- ", "x"})
      for (const std::size_t replaced : {0U, 1U}) {
        std::string text = whole;
        text.replace(at, replaced, slip);
        if (text.find("apiKey") == text.npos || text.find("token") == text.npos) continue;
        const std::string left = SecretBlanking::withoutSecrets(text, fields).text;
        EXPECT_THAT(left, Not(HasSubstr("12"))) << text;
      }
  const std::string harmless = "apiKey: ''\ntokn: 3\nkey: x\n";
  EXPECT_EQ(SecretBlanking::withoutSecrets(harmless, fields).text, harmless);
  EXPECT_FALSE(SecretBlanking::withoutSecrets(harmless, fields).heldSecrets);

  for (const char* lost : {"name: [x\napiKey: sk-12\n", "api_key: sk-12\n", "- apiKey: sk-12\n",
                           "apiKey: x\napiKey: sk-12\n", "a: {token: [sk-12]}\n"}) {
    write(Sample::fileName, lost);
    EXPECT_FAILURE(ConfigError, holdsSecret, configs.save(Sample(), Sample::fileName));
    EXPECT_EQ(read(Sample::fileName), lost) << "nothing was lost";
  }
  write(Sample::fileName, "name: [x\napiKey: sk-12\n");
  EXPECT_THROW((void)configs.load<Sample>(Sample::fileName), ConfigError);
  EXPECT_THAT(readFile(copies().at(0)), Not(HasSubstr("sk-12")));
  EXPECT_EQ(permissionsOf(config / Sample::fileName), ownerOnly);
  // A name in a comment is no secret.
  write(Sample::fileName, "# apiKey: 在密钥环里\nname: x\ngroup: {active: true}\n");
  configs.save(Sample(), Sample::fileName);
}

TEST_F(ConfigStoreTest, ASecretThatIsChangedWhileTheyMoveOutStays) {
  write(Sample::fileName, "name: x\napiKey: sk-1\ntoken: sk-2\ngroup: {active: true}\n");
  Sample sample = configs.load<Sample>(Sample::fileName).value();
  write(Sample::fileName, "name: z\napiKey: sk-1\ntoken: sk-3\ngroup: {active: true}\n");
  secrets.moveOut(sample);
  EXPECT_EQ(sample.apiKey, "sk-1");
  EXPECT_EQ(keychain.string("a"), "sk-1");
  EXPECT_THAT(read(Sample::fileName),
              AllOf(HasSubstr("name: z\napiKey: ''"), HasSubstr("token: sk-3")));
  EXPECT_EQ(permissionsOf(config / Sample::fileName), ownerOnly);
}

TEST_F(ConfigStoreTest, TagSettingsOfTwoProcessesAndOnADiskThatRefuses) {
  TagConfigStore tags(configs);
  TagConfigStore others(configs);
  tags.setColor("#112233", "工作");
  others.setEmoji("💼", "工作");
  tags.setColor("#445566", "生活");
  tags.removeColor("工作");
  EXPECT_EQ(tags.config().get(),
            (TagConfig{.colors = {{"生活", "#445566"}}, .emojis = {{"工作", "💼"}}}));
  EXPECT_EQ(TagConfigStore(configs).config().get(), tags.config().get());

  const std::string stored = read(TagConfig::fileName);
  fs::rename(config, folder.path() / "aside");
  writeFile(config, "in the way");
  tags.removeEmoji("工作");
  EXPECT_FALSE(tags.isSaved());
  EXPECT_TRUE(tags.config().get().emojis.empty()) << "stays in memory";
  fs::remove(config);
  fs::rename(folder.path() / "aside", config);
  EXPECT_EQ(read(TagConfig::fileName), stored);
  tags.setEmoji("🏠", "生活");
  EXPECT_TRUE(tags.isSaved());
  EXPECT_EQ(TagConfigStore(configs).config().get().emojis,
            (std::map<std::string, std::string>{{"生活", "🏠"}}));
}

}  // namespace
}  // namespace nomely::test
