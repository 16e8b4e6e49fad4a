#include "Support/Sound.h"

#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <numbers>
#include <sstream>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Support/Deadline.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {

namespace {

std::string waveHeader(std::uint32_t rate, std::uint32_t channels, std::uint32_t size) {
  const auto number = [](std::uint32_t value, std::size_t bytes = 4) {
    return std::string(reinterpret_cast<const char*>(&value), bytes);
  };
  return "RIFF" + number(36 + size) + "WAVEfmt " + number(16) + number(1, 2) + number(channels, 2) +
         number(rate) + number(rate * channels * 2) + number(channels * 2, 2) + number(16, 2) +
         "data" + number(size);
}

}  // namespace

void writeSilence(const fs::path& file, double seconds) {
  const auto size = static_cast<std::uint32_t>(std::llround(seconds * 16000) * 2);
  const std::string header = waveHeader(16000, 1, size);
  writeFile(file, header);
  fs::resize_file(file, header.size() + size);
}

void writeTone(const fs::path& file, const Tone& tone) {
  std::vector<std::int16_t> samples(tone.rate * tone.channels * tone.seconds);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const double moment = static_cast<double>(i / tone.channels) / tone.rate;
    samples[i] = static_cast<std::int16_t>(16000 * std::sin(2 * std::numbers::pi * 440 * moment));
  }
  const std::string bytes(reinterpret_cast<const char*>(samples.data()), samples.size() * 2);
  const auto size = static_cast<std::uint32_t>(bytes.size());
  writeFile(file, waveHeader(tone.rate, tone.channels, size) + bytes);
}

PlayedMicrophone::PlayedMicrophone(const fs::path& folder)
    : configuration_(folder / "asound.conf") {
  const fs::path pipe = folder / "microphone";
  if (::mkfifo(pipe.c_str(), 0600) != 0) throw std::runtime_error("no pipe");
  // Open for reading too, so that it never ends.
  pipe_ = ::open(pipe.c_str(), O_RDWR | O_CLOEXEC);
  writeFile(configuration_, std::string("pcm.") + name +
                                " { type file slave.pcm { type null } file /dev/null format raw "
                                "infile \"" +
                                pipe.string() + "\" }\n");
  ::setenv("ALSA_CONFIG_PATH", configuration_.c_str(), 1);
}

PlayedMicrophone::~PlayedMicrophone() {
  ::unsetenv("ALSA_CONFIG_PATH");
  ::close(pipe_);
}

void PlayedMicrophone::play(double seconds) const {
  std::vector<std::int16_t> samples(static_cast<std::size_t>(seconds * 44100));
  for (std::size_t i = 0; i < samples.size(); ++i)
    samples[i] = static_cast<std::int16_t>(16000 * std::sin(static_cast<double>(i) * 0.06));
  const auto* bytes = reinterpret_cast<const char*>(samples.data());
  for (std::size_t left = samples.size() * 2; left > 0;) {
    const ssize_t count = ::write(pipe_, bytes, left);
    if (count <= 0) throw std::runtime_error("nobody listens");
    bytes += count;
    left -= static_cast<std::size_t>(count);
  }
}

HeardSpeaker::HeardSpeaker(const fs::path& folder) {
  const fs::path pipe = folder / "speaker";
  if (::mkfifo(pipe.c_str(), 0600) != 0) throw std::runtime_error("no pipe");
  pipe_ = ::open(pipe.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK);
  ::fcntl(pipe_, F_SETPIPE_SZ, 4096);  // a moment of sound
  writeFile(folder / "speaker.conf",
            "pcm.default { type file slave.pcm { type null } format raw file \"" + pipe.string() +
                "\" }\n");
  ::setenv("ALSA_CONFIG_PATH", (folder / "speaker.conf").c_str(), 1);
}

HeardSpeaker::~HeardSpeaker() {
  ::unsetenv("ALSA_CONFIG_PATH");
  ::close(pipe_);
}

std::vector<std::int16_t> HeardSpeaker::hearUntil(
    const std::function<bool(std::size_t samples)>& isEnough) const {
  std::vector<std::int16_t> heard;
  const auto deadline = std::chrono::steady_clock::now() + longestWait;
  while (!isEnough(heard.size())) {
    if (std::chrono::steady_clock::now() > deadline) throw std::runtime_error("nothing is heard");
    pollfd waited{pipe_, POLLIN, 0};
    if (::poll(&waited, 1, 5) <= 0) continue;
    std::array<std::int16_t, 960> samples{};
    const ssize_t count = ::read(pipe_, samples.data(), sizeof samples);
    if (count > 0) heard.insert(heard.end(), samples.begin(), samples.begin() + count / 2);
  }
  return heard;
}

std::vector<std::int16_t> HeardSpeaker::hear(double seconds) const {
  const auto wanted = static_cast<std::size_t>(seconds * rate * 2);
  return hearUntil([wanted](std::size_t samples) { return samples >= wanted; });
}

std::vector<pid_t> childrenOf(pid_t parent) {
  std::vector<pid_t> children;
  for (const auto& entry : fs::directory_iterator("/proc")) {
    std::ifstream stream(entry.path() / "stat");
    std::string text;
    if (!std::getline(stream, text)) continue;
    std::istringstream fields(text.substr(text.rfind(')') + 1));
    char state = 'Z';
    pid_t itsParent = 0;
    fields >> state >> itsParent;
    if (itsParent == parent && state != 'Z')
      children.push_back(static_cast<pid_t>(std::stoi(entry.path().filename())));
  }
  return children;
}

}  // namespace nomely::test
