#include "Media/Playing.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>
#include <vector>

#include <poll.h>
#include <signal.h>

#include "Media/Answers.h"
#include "Media/Commands.h"
#include "Media/DecoderChild.h"
#include "Media/PlayedForm.h"
#include "Media/Speaker.h"
#include "Media/Tempo.h"

namespace nomely::media {
namespace {

constexpr double tellEvery = 0.05;  // seconds of the file
constexpr double latest = 1e7;      // seconds

double numberIn(std::string_view text, double least, double most) {
  double number = least;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return std::isfinite(number) ? std::clamp(number, least, most) : least;
}

class Player {
 public:
  Player(const Playing& playing, int file, int commands, int answers)
      : device_(playing.device), file_(file), commands_(commands), answers_(answers) {
    setSpeed(playing.speed);
    place_ = std::clamp(playing.from, 0.0, latest);
  }

  void run() {
    begin();
    while (!hasEnded_) {
      waitForSomething();
      if (!hasEnded_ && hasSamples_) playSome();
    }
  }

 private:
  // From place_ on.
  void begin() {
    decoder_.emplace(file_, place_);
    if (speaker_)
      speaker_->drop();
    else
      speaker_.emplace(device_);
    tempo_.emplace(speed_);
    written_ = 0;
    tell("playing", place_);
  }

  // Where in the file what is heard just now lies.
  [[nodiscard]] double heard() const {
    if (!decoder_) return place_;
    const double played = std::max(written_ - speaker_->delay(), 0.0);
    return place_ + played * speed_;
  }

  void waitForSomething() {
    std::array<pollfd, 2> waited{{{commands_.descriptor(), POLLIN, 0}, {-1, POLLIN, 0}}};
    if (decoder_) waited[1].fd = decoder_->descriptor();
    hasSamples_ = false;
    if (::poll(waited.data(), waited.size(), -1) < 0) return;
    hasSamples_ = decoder_ && waited[1].revents != 0;
    if (waited[0].revents != 0 &&
        !commands_.read([this](std::string_view command) { obey(command); }))
      hasEnded_ = true;
  }

  void obey(std::string_view command) {
    constexpr std::string_view seek = "seek ";
    constexpr std::string_view speed = "speed ";
    if (command == "stop") hasEnded_ = true;
    if (command == "pause" && decoder_) pause();
    if (command == "resume" && !decoder_) begin();
    if (command.starts_with(seek)) goTo(numberIn(command.substr(seek.size()), 0, latest));
    if (command.starts_with(speed)) {
      const double place = heard();
      setSpeed(numberIn(command.substr(speed.size()), slowest, fastest));
      goTo(place);
    }
    hasSamples_ = false;  // of another place, perhaps
  }

  void setSpeed(double speed) { speed_ = std::clamp(speed, slowest, fastest); }

  void pause() {
    place_ = heard();
    decoder_.reset();
    speaker_.reset();
    tell("paused", place_);
  }

  void goTo(double place) {
    place_ = place;
    if (decoder_)
      begin();
    else
      tell("paused", place_);
  }

  void playSome() {
    const auto samples = decoder_->read(buffer_);
    if (samples.empty()) return end();
    write(tempo_->convert(samples));
    if (const double place = heard(); std::abs(place - told_) >= tellEvery) tell("playing", place);
  }

  void end() {
    write(tempo_->finish());
    speaker_->drain();
    answers_.line("ended");
    hasEnded_ = true;
  }

  void write(std::span<const std::int16_t> samples) {
    speaker_->write(samples);
    written_ += static_cast<double>(samples.size()) / playedChannels / playedRate;
  }

  void tell(const char* what, double place) {
    told_ = place;
    answers_.line(std::string(what) + " " + std::to_string(place));
  }

  static constexpr double slowest = 0.5;
  static constexpr double fastest = 2;

  std::string device_;
  int file_;
  Commands commands_;
  Answers answers_;
  double speed_ = 1;
  double place_ = 0;  // in the file, where playing began or is to begin
  // These three while it plays.
  std::optional<DecoderChild> decoder_;
  std::optional<Speaker> speaker_;
  std::optional<Tempo> tempo_;
  double written_ = 0;  // seconds given to the speaker since then
  double told_ = 0;
  bool hasSamples_ = false;
  bool hasEnded_ = false;
  // No more at once, so that a command need not wait.
  std::array<std::int16_t, playedRate / 50 * playedChannels> buffer_{};
};

}  // namespace

void play(const Playing& playing, int file, int commands, int answers) {
  ::signal(SIGPIPE, SIG_IGN);
  Player(playing, file, commands, answers).run();
}

}  // namespace nomely::media
