#include "CLI/Session.h"

#include <cerrno>
#include <cstdio>
#include <exception>
#include <iostream>
#include <thread>
#include <utility>

#include <fmt/format.h>

#include "App/ChosenRoot.h"
#include "CLI/Interruption.h"
#include "CLI/UsageError.h"
#include "Core/Storage/RescueFolders.h"
#include "Platform/Concurrency/NotificationCenter.h"
#include "Platform/Files/FileError.h"
#include "Platform/Text/Ascii.h"
#include "Platform/Text/Unicode.h"

namespace nomely {

Session::Session(Machine machine) : machine_(std::move(machine)) {}
Session::~Session() = default;

std::filesystem::path Session::chosenRoot() const {
  // The usual one is not left to the application, which would make it: only a write does.
  return ChosenRoot::of(options.root, environment(), files());
}

Application& Session::application() {
  if (application_) return *application_;
  application_ = std::make_unique<Application>(ApplicationContext{
      environment(), chosenRoot(), runLoop_, clock(), machine_.fileSystem, machine_.secrets,
      machine_.http, machine_.webSockets, machine_.timers, NOMELY_VERSION});
  const StoreContext& storage = application_->storage();
  const auto root = storage.files.attributes(storage.paths.rootURL);
  if (root && root->type != FileType::directory)
    throw FileError("打开数据目录", storage.paths.rootURL, ENOTDIR);
  if (!root && !doesWithoutRoot_) RescueFolders::throwIfAny(storage.gate.root(), storage.files);
  originalKept_ = NotificationCenter::shared().observe(
      Notifications::originalKept, [this](const std::string& memoId) {
        if (toldOfOriginal_.exchange(true)) return;
        say(fmt::format(
            "文件头里有 Nomely 不用的内容，改写前的原文件已留下：nomely history {} original",
            memoId));
      });
  passedOver_ = NotificationCenter::shared().observe(
      Notifications::memoPassedOver, [this](const std::string& what) { tellUnreadable(what); });
  application_->settings().onProblem = [this](const std::string& problem) {
    say(fmt::format("{} {}", errorStyle().warning("注意"), Terminal::printable(problem)));
  };
  return *application_;
}

void Session::endApplication() {
  application_.reset();
}

void Session::host(const std::function<void(const std::stop_token&)>& work) {
  const std::stop_source stop;
  const Interruption interruption(stop);
  runBesides(work, stop);
}

void Session::hostResident(const std::function<void(const std::stop_token&)>& work,
                           const std::function<void()>& onReload) {
  const std::stop_source stop;
  const Interruption interruption(stop, [this, onReload] { runLoop_.post(onReload); });
  runBesides(work, stop);
}

void Session::runBesides(const std::function<void(const std::stop_token&)>& work,
                         const std::stop_source& stop) {
  (void)application();  // lives on the main executor
  std::exception_ptr failure;
  {
    const std::jthread worker([&] {
      try {
        work(stop.get_token());
      } catch (...) {
        failure = std::current_exception();
      }
      runLoop_.stop();
    });
    runLoop_.run();
  }
  if (failure) std::rethrow_exception(failure);
}

ColorMode Session::colorMode() const {
  if (options.color == "always") return ColorMode::always;
  if (options.color == "never") return ColorMode::never;
  return ColorMode::automatic;
}

Style Session::style() const {
  return Terminal::styleFor(colorMode(), isOutputTerminal_, environment());
}

Style Session::errorStyle() const {
  return Terminal::styleFor(colorMode(), Terminal::isError(), environment());
}

void Session::print(std::string_view text) const {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size())
    throw FileError("写入", "标准输出", errno);
}

void Session::flush() const {
  if (std::fflush(stdout) != 0) throw FileError("写入", "标准输出", errno);
}

void Session::printJson(const Json& json) const {
  print(json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n");
}

void Session::say(std::string_view text) const {
  if (!options.quiet) fmt::print(stderr, "{}\n", text);
}

bool Session::hasRoot() {
  return dayStore().context().files.exists(dayStore().paths().rootURL);
}

void Session::tellOfMissingRoot() {
  if (std::exchange(toldOfRoot_, true) || hasRoot()) return;
  const StoreContext& storage = application().storage();
  try {
    RescueFolders::throwIfAny(storage.gate.root(), storage.files);
  } catch (const Error& error) {
    return say(Terminal::printable(error.what()));
  }
  say(fmt::format("数据目录不存在：{}。用 --root 或 NOMELY_ROOT 指定，或用 nomely add 写下第一条。",
                  Terminal::printable(storage.paths.rootURL.string())));
}

void Session::tellOfNewRoot() {
  say(fmt::format("新建了数据目录：{}", Terminal::printable(dayStore().paths().rootURL.string())));
}

std::unique_ptr<RootScan> Session::scan(std::stop_token stop) {
  tellOfMissingRoot();
  auto scan = std::make_unique<RootScan>(dayStore().context(), std::move(stop));
  scan->onUnreadable = [this](const RootScan::Unreadable& unreadable) {
    tellUnreadable(fmt::format("{}：{}", unreadable.file.string(), unreadable.reason));
  };
  return scan;
}

void Session::tellUnreadable(const std::string& what) {
  const std::lock_guard lock(unreadableLock_);
  if (unreadable_.insert(what).second)
    say(fmt::format("{} {}", errorStyle().warning("读不出"), Terminal::printable(what)));
}

bool Session::confirm(std::string_view question) const {
  if (options.yes) return true;
  if (options.noInput || !Terminal::isInput())
    throw UsageError(fmt::format("{}此操作需要确认，请加 --yes。", question));
  fmt::print(stderr, "{} [y/N] ", question);
  std::fflush(stderr);
  std::string typed;
  std::getline(std::cin, typed);
  const std::string answer = loweredAscii(trimSpaceAndBreaks(typed));
  const bool isYes = answer == "y" || answer == "yes" || answer == "是";
  if (!isYes) say("已取消。");
  return isYes;
}

}  // namespace nomely
