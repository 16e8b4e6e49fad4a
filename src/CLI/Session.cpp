#include "CLI/Session.h"

#include <cerrno>
#include <cstdio>
#include <iostream>

#include <fmt/format.h>

#include "CLI/UsageError.h"
#include "Platform/Files/FileError.h"

namespace nomely {

Session::Session(Environment environment) : environment_(std::move(environment)) {}
Session::~Session() = default;

std::optional<std::filesystem::path> Session::chosenRoot() const {
  const std::string root =
      options.root.empty() ? environment_.get("NOMELY_ROOT").value_or("") : options.root;
  if (root.empty()) return std::nullopt;
  return std::filesystem::absolute(root).lexically_normal();
}

Application& Session::application() {
  if (application_) return *application_;
  application_ = std::make_unique<Application>(
      ApplicationContext{environment_, chosenRoot(), runLoop_, clock_, posixFileSystem()});
  const auto root = application_->storage().files.attributes(application_->paths().rootURL);
  if (root && root->type != FileType::directory)
    throw FileError("打开数据目录", application_->paths().rootURL, ENOTDIR);
  return *application_;
}

ColorMode Session::colorMode() const {
  if (options.color == "always") return ColorMode::always;
  if (options.color == "never") return ColorMode::never;
  return ColorMode::automatic;
}

Style Session::style() const {
  return Terminal::styleFor(colorMode(), Terminal::isOutput(), environment_);
}

Style Session::errorStyle() const {
  return Terminal::styleFor(colorMode(), Terminal::isError(), environment_);
}

void Session::print(std::string_view text) const {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size())
    throw FileError("写入", "标准输出", errno);
}

void Session::printJson(const Json& json) const {
  print(json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n");
}

void Session::say(std::string_view text) const {
  if (!options.quiet) fmt::print(stderr, "{}\n", text);
}

bool Session::confirm(std::string_view question) const {
  if (options.yes) return true;
  if (options.noInput || !Terminal::isInput())
    throw UsageError(fmt::format("{}此操作需要确认，请加 --yes。", question));
  fmt::print(stderr, "{} [y/N] ", question);
  std::fflush(stderr);
  std::string answer;
  std::getline(std::cin, answer);
  return answer == "y" || answer == "Y" || answer == "yes" || answer == "是";
}

}  // namespace nomely
