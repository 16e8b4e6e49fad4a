#pragma once

#include <string>

namespace nomely::media {

struct Playing {
  std::string device;
  double from = 0;   // seconds
  double speed = 1;  // 0.5 to 2; the pitch stays
};

// Plays the sound of `file`. Obeys lines on `commands`: pause, resume, seek SECONDS, speed FACTOR,
// stop, whose meaning the end of `commands` has, too. Tells on `answers` what holds: "playing
// SECONDS" with the place in the file that is heard, several times a second, and "paused SECONDS";
// at the end of the file "ended". While it is paused, the device is free for others. Throws
// Failure.
void play(const Playing& playing, int file, int commands, int answers);

}  // namespace nomely::media
