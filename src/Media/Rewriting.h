#pragma once

namespace nomely::media {

// Both put the sound of the file on `source` into `output`, an empty file open for reading too, as
// a PlainFile that is on the disk when they return. They throw Failure.

// The packets of a recording as they are.
void remux(int source, int output);

// Sound of any encoding as AAC of one channel, with the rate of samples that it has, up to 48 kHz.
// Throws Failure "tooLong" for what would take 256 MiB, six hours or more.
void convert(int source, int output);

}  // namespace nomely::media
