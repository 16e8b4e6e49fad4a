// The chat bot's platform, run by hand: each line typed is a message to the bot.

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <sstream>

#include <fmt/format.h>

#include "Feishu/Platform/FeishuPlatform.h"
#include "Platform/Time/Clock.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

constexpr const char* help = R"(TEXT                  a text message
/image FILE           a picture; /voice FILE and /file FILE likewise
/post TITLE|LINE|...  a text with a title; a line "img:FILE" is a picture
/group TEXT           from a group chat
/as OPENID TEXT       from somebody else than ou_me
/pieces N TEXT        in N fragments, the last one first
/again [ID]           delivers once more what was not acknowledged, or that message
/drop                 cuts the connection
/down, /up            answers no request any more, or again
/secret SECRET        changes the application's secret
/help, /quit
)";

class Phone {
 public:
  explicit Phone(FeishuPlatform& platform) : platform_(platform) {}

  // False when that was the last line.
  bool take(const std::string& line) {
    const std::size_t blank = std::min(line.find(' '), line.size());
    const std::string word = line.substr(0, blank);
    const std::string rest = line.substr(std::min(blank + 1, line.size()));
    if (line.empty()) return true;
    if (word == "/quit") return false;
    if (word == "/help")
      std::fputs(help, stdout);
    else if (word == "/again")
      rest.empty() ? platform_.redeliverUnacknowledged() : platform_.redeliver(rest);
    else if (word == "/drop")
      platform_.cut();
    else if (word == "/down" || word == "/up")
      setDown(word == "/down");
    else if (word == "/secret")
      platform_.setSecret(rest);
    else
      send(word, rest, line);
    return true;
  }

 private:
  void setDown(bool isDown) {
    using Call = FeishuPlatform::Call;
    for (const Call call :
         {Call::endpoint, Call::token, Call::reply, Call::reaction, Call::resource})
      platform_.fail(call, {.status = 503, .body = "down"}, isDown ? 1'000'000 : 0);
    if (isDown) platform_.cut();
  }

  void send(const std::string& word, const std::string& rest, const std::string& line) {
    const std::string id = fmt::format("om_{:x}_{}", started_, ++count_);
    PhoneMessage message = phone::text(id, word.starts_with('/') ? rest : line);
    FeishuPlatform::Pieces pieces;
    if (word == "/image")
      message = phone::image(id, media(rest));
    else if (word == "/voice")
      message = phone::voice(id, media(rest));
    else if (word == "/file")
      message = phone::file(id, media(rest), std::filesystem::path(rest).filename());
    else if (word == "/post")
      message = post(id, rest);
    else if (word == "/group")
      message = std::move(message).inGroup();
    else if (word == "/as")
      message = phone::text(id, rest.substr(std::min(rest.find(' ') + 1, rest.size())))
                    .by(rest.substr(0, rest.find(' ')));
    else if (word == "/pieces")
      message = inPieces(id, rest, pieces);
    else if (word.starts_with('/') && word != "/状态" && word != "/zt")
      return static_cast<void>(std::puts("no such command; /help lists them"));
    else
      message = phone::text(id, line);
    std::printf("%s: sent\n", id.c_str());
    platform_.send(std::move(message).at(clock_.now()), pieces);
  }

  std::string media(const std::string& file) {
    const std::string key = fmt::format("key_{}", ++keys_);
    platform_.setMedia(key, readFile(file));
    return key;
  }

  PhoneMessage post(const std::string& id, const std::string& rest) {
    std::istringstream stream(rest);
    std::string title;
    std::vector<std::string> lines;
    std::getline(stream, title, '|');
    for (std::string part; std::getline(stream, part, '|');)
      lines.push_back(part.starts_with("img:") ? "img:" + media(part.substr(4)) : part);
    return phone::post(id, title, lines);
  }

  static PhoneMessage inPieces(const std::string& id, const std::string& rest,
                               FeishuPlatform::Pieces& pieces) {
    std::istringstream stream(rest);
    stream >> pieces.count;
    pieces.count = std::clamp<std::size_t>(pieces.count, 1, 256);
    for (std::size_t i = pieces.count; i > 0; --i) pieces.order.push_back(i - 1);
    std::string text;
    std::getline(stream >> std::ws, text);
    return phone::text(id, text);
  }

  FeishuPlatform& platform_;
  const SystemClock clock_;
  const std::int64_t started_ = clock_.now().time_since_epoch().count();
  std::size_t count_ = 0;
  std::size_t keys_ = 0;
};

}  // namespace
}  // namespace nomely::test

int main(int, char** arguments) {
  using namespace nomely::test;
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  FeishuPlatform platform;
  platform.observe([](const std::string& line) { std::printf("%s\n", line.c_str()); });
  std::string after = "60";
  if (arguments[1] != nullptr) after = arguments[1];
  platform.redeliverAfter(std::chrono::seconds(std::max(1, std::atoi(after.c_str()))));
  std::printf(
      "The bot reaches this platform with\n"
      "  export NOMELY_FEISHU_ROOT=%s\n"
      "  nomely config set feishu.appId %s\n"
      "  printf %%s %s | nomely secret set feishu\n"
      "  nomely config set feishu.enabled true\n"
      "What is not acknowledged comes again after %s seconds. /help lists commands.\n",
      platform.root().c_str(), platform.config().appId.c_str(), platform.config().appSecret.c_str(),
      after.c_str());
  Phone phone(platform);
  for (std::string line; std::getline(std::cin, line);) {
    try {
      if (!phone.take(line)) break;
    } catch (const std::exception& error) {
      std::printf("%s\n", error.what());
    }
  }
  return 0;
}
