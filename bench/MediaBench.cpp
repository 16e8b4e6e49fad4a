#include <fstream>
#include <stdexcept>

#include <fcntl.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "AI/Voice/AudioRecorder.h"
#include "bench/Comparison.h"
#include "bench/LongRecording.h"
#include "bench/Workspace.h"

namespace nomely::bench {
namespace {

using std::filesystem::path;

// A few seconds of silence, recorded from a device that has nothing else.
path shortRecording() {
  std::filesystem::create_directories(workspace() / "sound");
  const path configuration = workspace() / "asound.conf";
  std::ofstream(configuration) << "pcm.silence { type null }\n";
  ::setenv("ALSA_CONFIG_PATH", configuration.c_str(), 1);
  const SystemClock clock;
  const auto capture = makeAudioCapture();
  AudioRecorder recorder(*capture, clock);
  recorder.startRecording(workspace() / "sound", "silence");
  while (recorder.status().seconds < 3 && !recorder.status().hasEnded) ::usleep(1000);
  return recorder.stopRecording();
}

// The most memory, in bytes, that decoding the file takes at any time.
double memoryOfDecoding(const path& file) {
  const path program = programFolder() / "nomely-media";
  const pid_t child = ::fork();
  if (child == 0) {
    ::dup2(::open(file.c_str(), O_RDONLY), STDIN_FILENO);
    const int nowhere = ::open("/dev/null", O_WRONLY);
    ::dup2(nowhere, STDOUT_FILENO);
    ::dup2(nowhere, 3);
    ::execl(program.c_str(), program.c_str(), "decode", nullptr);
    ::_exit(127);
  }
  int status = 0;
  rusage usage{};
  if (child < 0 || ::wait4(child, &status, 0, &usage) != child || status != 0)
    throw std::runtime_error("nothing was decoded");
  return static_cast<double>(usage.ru_maxrss) * 1024;
}

Steps decodingSteps() {
  constexpr double tenMinutes = 1.0 / 6;
  constexpr double tenHours = 10;
  const path recording = shortRecording();
  const path shorter = workspace() / "sound" / "ten-minutes.m4a";
  const path longer = workspace() / "sound" / "ten-hours.m4a";
  writeLongRecording(recording, tenMinutes, shorter);
  writeLongRecording(recording, tenHours, longer);
  const auto memory = std::make_shared<double>(0);
  return {.floor = [=](std::size_t) { *memory = memoryOfDecoding(shorter); },
          .ours = [=](std::size_t) { *memory = memoryOfDecoding(longer); },
          .bytesTaken = [=] { return *memory; }};
}

}  // namespace

void registerMedia() {
  registerComparison({.what = "memory: ten hours of sound, to ten minutes",
                      .prepare = &decodingSteps,
                      .goal = {.ratio = 1.5},
                      .turns = 1});
}

}  // namespace nomely::bench
