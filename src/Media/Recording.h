#pragma once

#include <string>

namespace nomely::media {

// Records from a device into `file`, an empty file, until told to stop on `commands`, where a word
// stands on each line: pause, resume, stop, cancel. The end of `commands`, SIGTERM and SIGINT stop
// it, too. Tells how it goes in lines on `answers`: "ready", "level SECONDS PEAK" (0 to 1) several
// times a second, "paused", "resumed", "stopped SECONDS". Throws Failure; what was recorded until
// then is in the file.
void record(const std::string& device, int file, int commands, int answers);

}  // namespace nomely::media
