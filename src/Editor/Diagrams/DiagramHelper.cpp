#include "Editor/Diagrams/DiagramHelper.h"

#include <atomic>
#include <utility>

#include "Editor/Diagrams/MermaidRenderCache.h"
#include "Platform/Audio/HelperProcess.h"
#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"
#include "Platform/Text/Base64.h"
#include "Platform/Text/JsonReading.h"

namespace nomely {
namespace {

using Kind = DiagramError::Kind;

constexpr struct {
  std::string_view word;
  Kind kind;
  const char* text;
} failures[] = {
    {"pages", Kind::pages, "未在 App 内找到 mermaid 渲染模板，请重新安装 Nomely。"},
    {"nothing", Kind::nothing, "图表里没有能画出来的内容，或者太宽，缩到一行字都不到。"},
    {"large", Kind::large, "图表太大，画不下，请分成几张。"},
    {"slow", Kind::slow, "图表 15 秒还没画完，请把它改小一些。"},
    {"crashed", Kind::crashed, "画这张图表时出了错，请把它改小一些。"},
};

[[noreturn]] void fail(std::string_view word, const std::string& message = {}) {
  if (word == "diagram") throw DiagramError(Kind::diagram, message);
  for (const auto& failure : failures)
    if (failure.word == word) throw DiagramError(failure.kind, failure.text);
  fail("crashed");
}

std::string textOf(const Json& answer, const char* key) {
  const auto found = answer.find(key);
  return found != answer.end() && found->is_string() ? found->get<std::string>() : std::string();
}

double numberOf(const Json& answer, const char* key) {
  const auto found = answer.find(key);
  return found != answer.end() && found->is_number() ? found->get<double>() : 0;
}

Json readAnswer(const std::string& line) {
  try {
    Json answer = readJson(line);
    if (answer.is_object()) return answer;
  } catch (const JsonError&) {
    Log::error(LogChannel::app, "nomely-diagrams: an answer that is none");
  }
  return Json::object();
}

DiagramPicture pictureOf(const Json& answer) {
  if (const std::string error = textOf(answer, "error"); !error.empty())
    fail(error, textOf(answer, "message"));
  auto png = decodeBase64(textOf(answer, "png"));
  DiagramPicture picture{.png = std::move(png).value_or(""),
                         .width = numberOf(answer, "width"),
                         .height = numberOf(answer, "height")};
  if (picture.png.empty() || picture.width < 1 || picture.height < 1) fail("crashed");
  return picture;
}

}  // namespace

// One call at a time talks to the program.
class DiagramHelper::Turn {
 public:
  Turn(DiagramHelper& helper, const std::stop_token& stop) : helper_(helper) {
    std::unique_lock lock(helper_.mutex_);
    helper_.freed_.wait(lock, stop, [&] { return !helper_.isTaken_; });
    throwIfStopped(stop);
    helper_.isTaken_ = true;
  }
  ~Turn() {
    const std::lock_guard lock(helper_.mutex_);
    helper_.isTaken_ = false;
    helper_.freed_.notify_one();
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

 private:
  DiagramHelper& helper_;
};

DiagramHelper::DiagramHelper(Timers& timers, Settings settings)
    : timers_(timers), settings_(std::move(settings)) {}

DiagramHelper::~DiagramHelper() = default;

bool DiagramHelper::isInstalled() const {
  return HelperProcess::isInstalled(settings_.program);
}

DiagramPicture DiagramHelper::render(const DiagramRequest& request, const std::stop_token& stop) {
  if (request.code.size() > settings_.longestSource) fail("large");
  const Turn turn(*this, stop);
  const Json answer = answerTo(request, stop);
  if (std::string svg = textOf(answer, "svg"); !svg.empty())
    MermaidRenderCache::shared(request.look).store(std::move(svg), request.code);
  return pictureOf(answer);
}

Json DiagramHelper::answerTo(const DiagramRequest& request, const std::stop_token& stop) {
  const std::uint64_t id = ++lastId_;
  Json line{{"id", id},
            {"code", request.code},
            {"dark", request.look == DiagramLook::dark},
            {"scale", request.scale}};
  if (auto svg = MermaidRenderCache::shared(request.look).svg(request.code))
    line["svg"] = *std::move(svg);
  const std::string text = line.dump(-1, ' ', false, Json::error_handler_t::replace);
  // Twice: the program may have been about to end for want of work.
  for (int attempt = 0; attempt < 2 && ends_ < settings_.greatestEnds; ++attempt) {
    if (auto answer = ask(text, id, stop)) {
      ends_ = 0;
      return *std::move(answer);
    }
    ++ends_;
  }
  if (ends_ >= settings_.greatestEnds)
    throw DiagramError(Kind::crashed, "画图表的程序总是意外退出，请重新打开 Nomely 再试。");
  fail("crashed");
}

std::optional<Json> DiagramHelper::ask(const std::string& line, std::uint64_t id,
                                       const std::stop_token& stop) {
  try {
    if (!process_)
      process_ = std::make_shared<HelperProcess>(HelperProcess::Call{.program = settings_.program});
  } catch (const HelperProcess::MissingError&) {
    throw DiagramError(Kind::missing, "要显示图表，请安装软件包 nomely-diagrams。");
  }

  std::stop_source ending;
  const std::stop_callback forward(stop, [&] { ending.request_stop(); });
  const auto isLate = std::make_shared<std::atomic<bool>>(false);
  // Killed there and then: a program that reads no more would hold up `send`, too.
  const auto timer =
      timers_.after(settings_.patience, [process = process_, isLate, ending]() mutable {
        isLate->store(true);
        process->kill();
        ending.request_stop();
      });
  try {
    process_->send(line);
    while (const auto answered = process_->readLine(ending.get_token())) {
      Json answer = readAnswer(*answered);
      // An earlier call may have left before its answer came.
      if (numberOf(answer, "id") == static_cast<double>(id)) return answer;
    }
  } catch (const CancellationError&) {
    if (!*isLate) throw;
  } catch (const FileError& error) {
    Log::error(LogChannel::app, "nomely-diagrams: {}", error.what());
  }
  process_.reset();
  if (*isLate) {
    ++ends_;
    fail("slow");
  }
  return std::nullopt;
}

}  // namespace nomely
