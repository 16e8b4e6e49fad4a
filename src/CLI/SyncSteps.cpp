#include "CLI/SyncSteps.h"

#include <fmt/format.h>

namespace nomely {
namespace {

// For a shell.
std::string quoted(const std::string& text) {
  constexpr auto plain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789/._-";
  if (text.find_first_not_of(plain) == std::string::npos) return text;
  std::string all = "'";
  for (const char byte : text)
    if (byte == '\'')
      all += "'\\''";
    else
      all += byte;
  return all + "'";
}

std::string step(std::string text, const std::vector<std::string>& commands) {
  for (const std::string& command : commands) text += "\n   " + command;
  return text;
}

std::vector<std::string> syncthing(const std::string& root) {
  return {step("两台电脑都装上 Syncthing，并让它一直运行：",
               {"sudo apt install syncthing", "systemctl --user enable --now syncthing"}),
          step("在另一台电脑上也执行这条命令（忽略文件不会跟着同步过去）：",
               {"nomely sync init syncthing"}),
          step("在每台电脑上看自己的设备 ID：", {"syncthing --device-id"}),
          step("在每台电脑上写入另一台的设备 ID（换掉“对方ID”），并共享数据目录；"
               "也可以在网页 http://127.0.0.1:8384 里做：",
               {"syncthing cli config devices add --device-id 对方ID",
                "syncthing cli config folders add --id nomely --path " + quoted(root),
                "syncthing cli config folders nomely devices add --device-id 对方ID",
                "syncthing cli config folders nomely max-conflicts set -- -1"}),
          step("等两边都同步完，以后照常写。两边同时写下的，nomely run 或窗口开着时会自动合并；"
               "没开着就执行：",
               {"nomely doctor --fix"})};
}

std::vector<std::string> git(const std::string& root) {
  const std::string git = "git -C " + quoted(root);
  const auto commit = [&](const char* message) {
    return fmt::format("{0} add -A && {0} commit -m {1}", git, message);
  };
  return {
      step("第一次用 git 的电脑，先告诉它你是谁：",
           {"git config --global user.name 名字 && git config --global user.email 邮箱"}),
      step("存下现在的日记：", {commit("日记")}),
      step("准备一个两台电脑都够得着的私有仓库（在自己的服务器上 git init --bare 日记.git，"
           "或用托管网站上的），换掉“地址”：",
           {fmt::format("{0} remote add origin 地址 && {0} push -u origin HEAD", git)}),
      step("在另一台还没有日记的电脑上：", {"git clone 地址 ~/NomelyData && nomely sync init git"}),
      step("以后每次换电脑之前和之后：",
           {fmt::format("{1}; {0} pull && {0} push", git, commit("日记"))}),
      step("pull 说有冲突（CONFLICT）时不用手改：nomely run 或窗口开着时会自动合并，"
           "没开着就执行 nomely doctor --fix，再存下：",
           {fmt::format("{1} && {0} push", git, commit("合并"))})};
}

}  // namespace

std::vector<std::string> SyncSteps::of(SyncedFolder::Engine engine,
                                       const std::filesystem::path& root) {
  return engine == SyncedFolder::Engine::git ? git(root.string()) : syncthing(root.string());
}

}  // namespace nomely
