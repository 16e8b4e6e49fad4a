#include "Feishu/Soak/SoakMessages.h"

#include <fmt/format.h>

#include "Platform/Time/Clock.h"

namespace nomely::test {

SoakMessage soakMessage(std::size_t number, FeishuPlatform& platform, const std::string& sound) {
  std::mt19937 random(static_cast<unsigned>(number));
  const std::string id = fmt::format("om_{}", number);
  const std::string text = fmt::format("第 {} 条 #标签{}", number, number % 7);
  std::vector<std::string> files;
  const auto media = [&](std::string bytes) {
    const std::string key = fmt::format("key_{}_{}", number, files.size());
    platform.setMedia(key, bytes);
    files.push_back(std::move(bytes));
    return key;
  };
  const auto picture = [&] {
    return media(fmt::format("\xFF\xD8\xFF\xE0 {} {}", number, files.size()) +
                 std::string(random() % 20'000, 'p'));
  };
  const auto made = [&](PhoneMessage message, std::string part, bool isVoice = false) {
    return SoakMessage{.message = std::move(message).at(SystemClock().now()),
                       .bodyPart = std::move(part),
                       .files = files,
                       .isVoice = isVoice};
  };
  const auto ignored = [&](PhoneMessage message) {
    return SoakMessage{.message = std::move(message).at(SystemClock().now()), .isRecorded = false};
  };
  switch (number % 20) {
    case 3:
    case 13:
      return made(phone::image(id, picture()), "来自飞书");
    case 5:
      return made(phone::voice(id, media(sound)), "来自飞书的语音", true);
    case 7:
      return made(
          phone::file(id,
                      media(fmt::format("文件 {} ", number) + std::string(random() % 300'000, 'f')),
                      fmt::format("报告{}.txt", number)),
          fmt::format("报告{}.txt", number));
    case 9: {
      const std::string first = "img:" + picture();
      const std::string second = "img:" + picture();
      return made(phone::post(id, "标题", {text, first, "中间", second}), text);
    }
    case 11:
      return ignored(phone::text(id, text).inGroup());
    case 15:
      return ignored(phone::text(id, text).by("ou_stranger"));
    case 17:
      return ignored(PhoneMessage(id, "sticker", R"({"file_key":"key_s"})"));
    default:
      return made(phone::text(id, text), text);
  }
}

}  // namespace nomely::test
