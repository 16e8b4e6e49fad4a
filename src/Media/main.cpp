// Everything that has to do with sound, in a process of its own: a decoder that crashes over a
// hostile file takes nothing with it, and the libraries cost no start of the main program.
//
//   nomely-media probe          "duration SECONDS" of the file on descriptor 0
//   nomely-media shape PARTS    "shape SECONDS PEAK..." of its sound, peaks from 0 to 1
//   nomely-media decode         its samples to 3, 16 kHz, mono, 16 bits
//   nomely-media remux          the recording on 0, playable everywhere, into the empty file on 3
//   nomely-media convert        any sound on 0, as AAC in an m4a, into the empty file on 3
//   nomely-media record DEVICE  see Recording.h; into the empty file on 3
//   nomely-media play DEVICE SECONDS SPEED  see Playing.h; the file on 3
//
// What has no answer of its own ends with "done". A failure is told as the line "error KIND DETAIL"
// and gives status 1.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <string_view>

#include <unistd.h>

#include "Media/Answers.h"
#include "Media/Confinement.h"
#include "Media/Decoding.h"
#include "Media/Failure.h"
#include "Media/Playing.h"
#include "Media/Recording.h"
#include "Media/Rewriting.h"

namespace nomely::media {
namespace {

constexpr int file = 3;

// What follows the name of the job.
struct Arguments {
  int count;
  char** words;

  [[nodiscard]] const char* at(int index, const char* usual) const {
    return index + 2 < count ? words[index + 2] : usual;
  }
};

void tellShape(std::size_t parts) {
  const SoundShape shape = shapeOf(STDIN_FILENO, parts);
  std::string answer = "shape " + std::to_string(shape.seconds);
  for (const float peak : shape.peaks) answer += " " + std::to_string(peak);
  Answers(STDOUT_FILENO).line(answer);
}

void run(std::string_view job, const Arguments& arguments) {
  ::av_log_set_level(AV_LOG_QUIET);
  if (job == "record") return record(arguments.at(0, "default"), file, STDIN_FILENO, STDOUT_FILENO);
  if (job == "play")
    return play({.device = arguments.at(0, "default"),
                 .from = std::atof(arguments.at(1, "0")),
                 .speed = std::atof(arguments.at(2, "1"))},
                file, STDIN_FILENO, STDOUT_FILENO);
  confine();
  if (job == "probe")
    Answers(STDOUT_FILENO).line("duration " + std::to_string(durationOf(STDIN_FILENO)));
  else if (job == "shape")
    tellShape(static_cast<std::size_t>(std::atoi(arguments.at(0, "100"))));
  else if (job == "decode")
    decode(STDIN_FILENO, {.rate = 16000}, file);
  else if (job == "remux")
    remux(STDIN_FILENO, file);
  else if (job == "convert")
    convert(STDIN_FILENO, file);
  else
    throw Failure("usage",
                  "probe | shape PARTS | decode | remux | convert | record DEVICE | play DEVICE "
                  "SECONDS SPEED");
}

int runReported(std::string_view job, const Arguments& arguments) {
  const Answers answers(STDOUT_FILENO);
  try {
    run(job, arguments);
    if (job == "decode" || job == "remux" || job == "convert") answers.line("done");
    return 0;
  } catch (const Failure& failure) {
    answers.line("error " + failure.kind() + " " + failure.what());
  } catch (const std::exception& error) {
    answers.line(std::string("error internal ") + error.what());
  }
  return 1;
}

}  // namespace
}  // namespace nomely::media

int main(int count, char** arguments) {
  const int status = nomely::media::runReported(count > 1 ? arguments[1] : "", {count, arguments});
  // A device may still hold the thread that reads it.
  std::fflush(nullptr);
  ::_exit(status);
}
