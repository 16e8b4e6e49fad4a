#include "Media/Libav.h"

#include <array>
#include <cerrno>

#include "Media/Failure.h"

namespace nomely::media {

std::string describe(int error) {
  std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
  ::av_strerror(error, text.data(), text.size());
  return text.data();
}

int require(int result, const char* kind, const char* what) {
  if (result >= 0) return result;
  const bool isFull = result == AVERROR(ENOSPC) || result == AVERROR(EDQUOT);
  throw Failure(isFull ? "noSpace" : kind, std::string(what) + ": " + describe(result));
}

}  // namespace nomely::media
