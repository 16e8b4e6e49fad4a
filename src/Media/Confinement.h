#pragma once

namespace nomely::media {

// Takes from this process what decoding a foreign file needs least: from here on it can open no
// file, reach no network and start no program, and it dies with whoever started it. What is open
// can be read and written.
void confine();

}  // namespace nomely::media
