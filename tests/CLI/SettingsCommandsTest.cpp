#include <chrono>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "CLI/CommandTest.h"

namespace nomely::test {
namespace {

using namespace std::chrono_literals;

constexpr const char* planted = "sk-PLANTED-4711";

class SettingsCommandsTest : public CommandTest {
 protected:
  [[nodiscard]] ProgramResult set(const std::string& name, const std::string& input,
                                  std::map<std::string, std::string> environment = {}) const {
    return run(ProgramCall{.arguments = {"secret", "set", name},
                           .input = input,
                           .environment = std::move(environment)});
  }
  void write(const std::string& name, const std::string& text) const {
    writeFile(root / "_config" / name, text);
  }

  fs::path secretFile = home.path() / ".local/state/nomely/secrets/secrets.json";
};

TEST_F(SettingsCommandsTest, ConfigListsGetsAndSets) {
  const Json defaults = json({"config"});
  EXPECT_EQ(defaults["ai.provider"], "deepseek");
  EXPECT_EQ(defaults["ai.baseURL"], nullptr);
  EXPECT_EQ(defaults["tts.speedRatio"], 1.0);
  EXPECT_FALSE(defaults.contains("ai.apiKey"));
  EXPECT_FALSE(fs::exists(root)) << "looking makes nothing";
  EXPECT_THAT(run({"config", "set", "ai.provider", "qwen"}).errors, HasSubstr("qwen-plus"));
  EXPECT_EQ(run({"config", "get", "ai.model"}).output, "qwen-plus\n");
  EXPECT_EQ(json({"config", "set", "feishu.enabled", "true"})["value"], true);
  const std::string before = treeOf(root);
  for (const auto& [words, status] :
       {std::pair(std::vector<std::string>{"config", "set", "ai.provider", "nobody"}, 2),
        {{"config", "set", "ai.apiKey", planted}, 2},
        {{"config", "set", "ai.nothing", "1"}, 4},
        {{"config", "get", "ai.nothing"}, 4},
        {{"secret", "set", "nobody"}, 2}}) {
    const ProgramResult result = run(words);
    EXPECT_EQ(result.status, status) << result.errors;
    EXPECT_THAT(result.errors, Not(HasSubstr(planted)));
  }
  EXPECT_EQ(treeOf(root), before);
}

TEST_F(SettingsCommandsTest, SecretsComeFromStandardInputAndAreShownNowhere) {
  for (const char* refused : {"", "\n", "a\nb\n", "a\x1B[2J", "\xFF"})
    EXPECT_EQ(set("ai", refused).status, 2) << refused;
  EXPECT_FALSE(fs::exists(secretFile));
  const ProgramResult stored = set("ai", std::string(planted) + "\r\n");
  EXPECT_EQ(stored.status, 0) << stored.errors;
  EXPECT_THAT(stored.errors, HasSubstr("没有可用的密钥环"));
  EXPECT_THAT(readFile(secretFile), HasSubstr(std::string("\"") + planted + "\""));
  EXPECT_EQ(json({"config", "get", "ai.apiKey"})["secret"], "set");
  EXPECT_EQ(json({"secret"})["feishu"], "none");

  write("tts-config.yaml",
        std::string("appid: a1\napiKey: ") + planted + "\nvoiceType: ''\nspeedRatio: 1.0\n");
  EXPECT_EQ(json({"secret"})["tts-key"], "set");
  EXPECT_THAT(treeOf(root), Not(HasSubstr(planted)));
  fs::permissions(secretFile.parent_path(), fs::perms::owner_all | fs::perms::others_read);
  std::string said = stored.output + stored.errors;
  for (const auto& words : std::vector<std::vector<std::string>>{
           {"config", "-v"}, {"secret", "-v"}, {"config", "get", "tts.apiKey", "-v"}}) {
    const ProgramResult result = run(words);
    said += result.output + result.errors;
  }
  EXPECT_THAT(said, Not(HasSubstr("PLANTED")));

  EXPECT_EQ(run({"secret", "delete", "ai"}).status, 2) << "asks first";
  EXPECT_EQ(json({"secret", "delete", "ai", "-y"})["ai"], "none");
  writeFile(secretFile, "{");
  EXPECT_EQ(json({"secret"})["ai"], "unavailable");
  EXPECT_EQ(set("ai", planted).status, 1);
  EXPECT_EQ(readFile(secretFile), "{");
}

TEST_F(SettingsCommandsTest, ASecretIsTypedUnseen) {
  for (const bool isInterrupted : {false, true}) {
    TerminalRun shell(
        "/bin/sh", home.path(),
        {.arguments = {"-c", "trap : INT; \"$NOMELY\" secret set ai; echo status $?; stty -a"},
         .environment = {{"NOMELY_ROOT", root.string()}, {"NOMELY", TestPaths::nomely}}});
    shell.waitFor("不显示");
    shell.type(isInterrupted ? "sk-\x03" : std::string(planted) + "\n");
    shell.waitFor(isInterrupted ? "status 130" : "status 0");
    shell.waitFor(" echo ");
    shell.finish();
    EXPECT_THAT(shell.screen(), AllOf(Not(HasSubstr("sk-")), HasSubstr(" echo ")));
  }
}

// A bus that takes connections and never says a word.
TEST_F(SettingsCommandsTest, ABusThatIsSilentIsAskedForSecretsAloneAndNotForLong) {
  const std::string path = (home.path() / "bus").string();
  const int bus = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(::bind(bus, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(::listen(bus, 16), 0);
  const auto isTouched = [&] {
    pollfd waiting{.fd = bus, .events = POLLIN, .revents = 0};
    return ::poll(&waiting, 1, 0) > 0;
  };
  const auto runOnBus = [&](std::vector<std::string> words) {
    return run(ProgramCall{.arguments = std::move(words),
                           .environment = {{"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + path}}});
  };
  for (const auto& words : std::vector<std::vector<std::string>>{
           {"list"}, {"config"}, {"config", "set", "ai.model", "x"}, {"add", "x"}})
    EXPECT_EQ(runOnBus(words).status, 0);
  EXPECT_FALSE(isTouched());
  const auto start = std::chrono::steady_clock::now();
  const ProgramResult asked = runOnBus({"secret", "--json"});
  EXPECT_LT(std::chrono::steady_clock::now() - start, 15s);
  EXPECT_EQ(Json::parse(asked.output)["ai"], "unavailable");
  EXPECT_THAT(asked.errors, HasSubstr("没有回应"));
  EXPECT_TRUE(isTouched());
  ::close(bus);
}

// A bus and a gnome-keyring of their own: at first without a keyring, then open, locked, open.
TEST_F(SettingsCommandsTest, AKeyringTakesOverAndALockedOneLosesNothing) {
  fs::create_directory(home.path() / "run");
  fs::permissions(home.path() / "run", fs::perms::owner_all);
  const std::string script = R"(
    open() {
      printf pw | gnome-keyring-daemon --replace --unlock --components=secrets --daemonize >&2
    }
    give() { printf '%s' "$2" | "$NOMELY" secret set "$1" --json; echo "status $?"; }
    give ai sk-PLANTED-4711
    open
    "$NOMELY" config get ai.apiKey
    cat "$HOME/.local/state/nomely/secrets/secrets.json"
    give feishu sk-PLANTED-2
    dbus-send --session --print-reply --dest=org.freedesktop.secrets /org/freedesktop/secrets \
      org.freedesktop.Secret.Service.Lock \
      array:objpath:/org/freedesktop/secrets/collection/login >&2
    echo locked
    "$NOMELY" secret --json
    give ai other
    "$NOMELY" secret delete feishu -y; echo "status $?"
    printf 'provider: openai\nmodel: m\napiKey: sk-PLANTED-3\nfeatures: {writingAssistant: true, beautify: true}\n' \
      > "$NOMELY_ROOT/_config/ai-config.yaml"
    "$NOMELY" config get ai.model
    grep -c PLANTED "$NOMELY_ROOT/_config/ai-config.yaml"
    open
    echo opened
    "$NOMELY" config get ai.model
    grep -c PLANTED "$NOMELY_ROOT/_config/ai-config.yaml"
    "$NOMELY" secret --json
  )";
  fs::create_directories(root / "_config");
  const ProgramResult result =
      runProgram("/usr/bin/dbus-run-session", home.path(),
                 {.arguments = {"--", "/bin/sh", "-c", script},
                  .environment = {{"NOMELY_ROOT", root.string()},
                                  {"NOMELY", TestPaths::nomely},
                                  {"XDG_RUNTIME_DIR", (home.path() / "run").string()}}});
  const std::string keyring = R"("place":"keyring"})";
  EXPECT_EQ(
      result.output,
      "{\"name\":\"ai\",\"place\":\"file\"}\nstatus 0\n"
      "已设置\n{\n  \"com.tarvik.Nomely\": {}\n}\n"
      "{\"name\":\"feishu\"," +
          keyring +
          "\nstatus 0\n"
          "locked\n"
          R"({"ai":"unavailable","tts-key":"unavailable","tts-appid":"unavailable",)"
          R"("feishu":"unavailable","transcription":"unavailable"})"
          "\n"
          R"({"error":{"code":"secret.locked","message":"密钥环锁着，请先解锁（在桌面登录，或打开“密码和密钥”解锁登录密钥环）再试"}})"
          "\n"
          "status 1\nstatus 1\nm\n1\n"
          "opened\nm\n0\n"
          R"({"ai":"set","tts-key":"none","tts-appid":"none","feishu":"set",)"
          R"("transcription":"none"})"
          "\n")
      << result.errors;
  EXPECT_THAT(result.errors, AllOf(HasSubstr("密钥还留在设置文件"), Not(HasSubstr("PLANTED"))));
}

TEST_F(SettingsCommandsTest, TagsHaveColoursAndEmojis) {
  (void)add("一", {"--tag", "运动"});
  EXPECT_EQ(json({"tags", "color", "运动", "f80"}), Json({{"tag", "运动"}, {"color", "#FF8800"}}));
  EXPECT_EQ(json({"tags", "emoji", "运动", "🏃"})["emoji"], "🏃");
  EXPECT_EQ(json({"tags"})[0]["color"], "#FF8800");
  EXPECT_EQ(run({"tags", "--color", "always"}).output,
            "     1  🏃 \x1B[38;2;255;136;0m#运动\x1B[0m\n");
  for (const auto& words : std::vector<std::vector<std::string>>{{"tags", "color", "运动", "好看"},
                                                                 {"tags", "emoji", "运动", "跑步"},
                                                                 {"tags", "color", ""}})
    EXPECT_EQ(run(words).status, 2);
  (void)run({"tags", "color", "运动"});
  EXPECT_EQ(json({"tags", "emoji", "运动", ""}), Json({{"tag", "运动"}}));
}

}  // namespace
}  // namespace nomely::test
