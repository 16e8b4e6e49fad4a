#include "App/AppSettings.h"
#include "App/LockableSecrets.h"
#include "Support/ErrorKind.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

using Source = AppSettings::Source;

class AppSettingsTest : public StoreTest {
 protected:
  AppSettings open(Source source = Source::files) { return {context, backend, source}; }
  void write(const std::string& name, const std::string& text) const {
    writeFile(folder.path() / "_config" / name, text);
  }
  [[nodiscard]] std::string read(const std::string& name) const {
    return readFile(folder.path() / "_config" / name);
  }
  void collect(AppSettings& settings) {
    settings.onProblem = [this](const std::string& problem) { problems.push_back(problem); };
  }

  LockableSecrets backend;
  KeychainStore keychain{backend};
  std::vector<std::string> problems;
};

const std::string aiFile =
    "provider: openai\nmodel: gpt-4o\napiKey: sk-1\nfeatures: {writingAssistant: false, beautify: "
    "true}\n";

TEST_F(AppSettingsTest, FilesGiveUpTheirSecretsOrKeepThem) {
  backend.isLocked = true;
  write("ai-config.yaml", aiFile);
  {
    AppSettings settings = open();
    collect(settings);
    EXPECT_EQ(settings.ai().apiKey, "sk-1") << "known from the file";
    (void)settings.ai();
    EXPECT_EQ(fs::status(folder.path() / "_config/ai-config.yaml").permissions(),
              fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_THAT(problems, ElementsAre(AllOf(HasSubstr("密钥还留在"), Not(HasSubstr("sk-1")))));
    settings.set("ai.model", "gpt-5");
    EXPECT_THAT(read("ai-config.yaml"), AllOf(HasSubstr("gpt-5"), HasSubstr("sk-1")));
    EXPECT_EQ(settings.lookUpSecret("ai").value, "sk-1");
    EXPECT_FAILURE(SecretError, locked, settings.setSecret("ai", "sk-2"));
    EXPECT_FAILURE(SecretError, unavailable, settings.tts());
  }
  backend.isLocked = false;
  AppSettings settings = open();
  const AIConfig ai = settings.ai();
  EXPECT_EQ(ai, (AIConfig{.provider = AIConfig::Provider::openai,
                          .model = "gpt-5",
                          .apiKey = "sk-1",
                          .features = {.writingAssistant = false}}));
  EXPECT_THAT(read("ai-config.yaml"), HasSubstr("apiKey: ''"));
  EXPECT_EQ(keychain.string("Nomely.aiAPIKey"), "sk-1");
}

TEST_F(AppSettingsTest, FaultyFilesGiveDefaultsAndAreToldOfOnce) {
  write("ai-config.yaml", "provider: [\n");
  write("display-config.yaml", "tagFontSize: 9\nbodyFontSize: 9\n");
  AppSettings settings = open();
  collect(settings);
  EXPECT_EQ(settings.ai(), AIConfig());
  EXPECT_EQ(settings.withoutSecrets<AIConfig>(), AIConfig());
  EXPECT_THAT(problems, ElementsAre(HasSubstr("ai-config.yaml 有误，第 ")));
  EXPECT_EQ(settings.display().tagFontSize, 9);
  AppSettings underTest = open(Source::defaults);
  EXPECT_EQ(underTest.display(), DisplayConfig());
}

TEST_F(AppSettingsTest, PagesWriteOnlySecretsThatTheirUserChanged) {
  keychain.store("sk-1", "Nomely.aiAPIKey");
  keychain.store("app", "Nomely.ttsAppID");
  AppSettings settings = open();
  collect(settings);
  SettingsRecords edited = settings.records();
  EXPECT_EQ(edited.ai.apiKey, "sk-1");
  edited.ai.apiKey = "sk-2";
  edited.tts.appid.clear();
  edited.display.bodyFontSize = 20;
  settings.saveAllConfigs(edited);
  EXPECT_EQ(keychain.string("Nomely.aiAPIKey"), "sk-2");
  EXPECT_FALSE(keychain.string("Nomely.ttsAppID"));
  EXPECT_THAT(read("ai-config.yaml"), Not(HasSubstr("sk-")));
  EXPECT_EQ(open().display().bodyFontSize, 20);

  // What could not be read is not taken for empty.
  backend.isLocked = true;
  AppSettings blind = open();
  collect(blind);
  edited = blind.records();
  EXPECT_EQ(edited.ai.apiKey, "");
  const int calls = backend.calls;
  blind.saveAllConfigs(edited);
  EXPECT_EQ(backend.calls, calls);
  edited.feishu.appSecret = "new";
  blind.saveAllConfigs(edited);
  EXPECT_THAT(problems, ElementsAre(HasSubstr("feishu.appSecret")));
  backend.isLocked = false;
  EXPECT_EQ(keychain.string("Nomely.aiAPIKey"), "sk-2");
}

TEST_F(AppSettingsTest, SettingsOneByOne) {
  AppSettings settings = open();
  settings.set("ai.provider", "doubao");
  settings.set("ai.features.beautify", "no");
  open().set("ai.model", "由别的进程");
  settings.set("ai.provider", "doubao");  // the present one changes nothing
  EXPECT_EQ(read("ai-config.yaml"),
            "provider: doubao\nmodel: 由别的进程\napiKey: ''\n"
            "baseURL: https://ark.cn-beijing.volces.com/api/v3\n"
            "features:\n  writingAssistant: true\n  beautify: false\n");
  settings.set("ai.baseURL", "");
  EXPECT_FALSE(open().withoutSecrets<AIConfig>().baseURL);
  const std::string before = read("ai-config.yaml");
  for (const auto& [key, value] : {
           std::pair("ai.provider", "nobody"),
           {"ai.features.beautify", "maybe"},
           {"ai.timeout", "600"},  // not this vendor's
           {"ai.model", "a\nb"},
           {"ai.baseURL", "ftp://x"},
           {"tts.speedRatio", "0"},
           {"tts.speedRatio", "fast"},
           {"tts.speedRatio", ".nan"},
           {"display.linkDisplayMode", ""},
       })
    EXPECT_FAILURE(ConfigError, badValue, settings.set(key, value)) << key << " " << value;
  for (const char* key : {"ai", "ai.", "ai.features", "ai.apiKey", "tags.colors", "x.y", ""})
    EXPECT_THROW(settings.set(key, "x"), UnknownSettingError) << key;
  EXPECT_EQ(read("ai-config.yaml"), before);
  settings.set("ai.provider", "custom");
  settings.set("ai.timeout", "600");
  settings.set("tts.speedRatio", "1.25");
  EXPECT_EQ(open().withoutSecrets<AIConfig>().timeout, 600);
  EXPECT_EQ(open().withoutSecrets<TTSConfig>().speedRatio, 1.25);

  const std::vector<AppSettings::Setting> all = settings.settings();
  EXPECT_EQ(all.front().key, "ai.provider");
  EXPECT_EQ(all.front().choices.size(), 7U);
  EXPECT_EQ(backend.calls, 0) << "no setting needs the keychain";
}

TEST_F(AppSettingsTest, AProcessThatStaysFollowsTheFiles) {
  AppSettings settings = open();
  collect(settings);
  std::string stamp = settings.stamp();
  const auto hasChanged = [&] { return std::exchange(stamp, settings.stamp()) != stamp; };
  EXPECT_EQ(settings.display().bodyFontSize, 14);
  AppSettings(context, backend, Source::files).set("display.bodyFontSize", "18");
  EXPECT_TRUE(hasChanged());
  EXPECT_FALSE(hasChanged());
  EXPECT_EQ(settings.display().bodyFontSize, 14);
  settings.reload();
  EXPECT_EQ(settings.display().bodyFontSize, 18);
  write("display-config.yaml", "bodyFontSize: [\n");
  settings.reload();
  EXPECT_EQ(settings.display().bodyFontSize, 18);
  EXPECT_THAT(problems, ElementsAre(HasSubstr("沿用之前的设置")));
  fs::remove(folder.path() / "_config/display-config.yaml");
  EXPECT_TRUE(hasChanged());
  settings.reload();
  EXPECT_EQ(settings.display().bodyFontSize, 14);
}

TEST_F(AppSettingsTest, WhatFollowsFromARecord) {
  EXPECT_EQ(AIConfig().effectiveBaseURL(), "https://api.deepseek.com");
  for (const auto& [voice, resource] : {std::pair("", "seed-tts-2.0"),
                                        {"a_moon_bigtts", "seed-tts-1.0"},
                                        {"a_uranus_bigtts", "seed-tts-2.0"},
                                        {"其他", "seed-tts-2.0"}})
    EXPECT_EQ(TTSConfig{.voiceType = voice}.resourceID(), resource);
  write("transcription-config.yaml", "baseURL: http://127.0.0.1:8080\n");
  EXPECT_EQ(open().withoutSecrets<TranscriptionConfig>(),
            TranscriptionConfig{.baseURL = "http://127.0.0.1:8080"});
}

}  // namespace
}  // namespace nomely::test
