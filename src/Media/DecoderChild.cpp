#include "Media/DecoderChild.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <exception>

#include <fcntl.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Media/Confinement.h"
#include "Media/Decoding.h"
#include "Media/Failure.h"
#include "Media/PlayedForm.h"

namespace nomely::media {
namespace {

constexpr int noAudio = 2;  // status of a process that found none

int decodeConfined(int file, double from, int output) {
  try {
    confine();
    decode(file, {.rate = playedRate, .channels = playedChannels, .from = from}, output);
    return 0;
  } catch (const Failure& failure) {
    return failure.kind() == "noAudio" ? noAudio : 1;
  } catch (const std::exception&) {
    return 1;
  }
}

}  // namespace

DecoderChild::DecoderChild(int file, double from) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw Failure("internal", std::strerror(errno));
  process_ = ::fork();
  if (process_ == 0) {
    ::dup2(file, STDIN_FILENO);
    ::dup2(ends[1], STDOUT_FILENO);
    ::syscall(SYS_close_range, STDERR_FILENO + 1, ~0U, 0);
    ::_exit(decodeConfined(STDIN_FILENO, from, STDOUT_FILENO));
  }
  ::close(ends[1]);
  samples_ = ends[0];
  if (process_ < 0) {
    ::close(samples_);
    throw Failure("internal", std::strerror(errno));
  }
}

DecoderChild::~DecoderChild() {
  ::close(samples_);
  if (process_ < 0) return;
  ::kill(process_, SIGKILL);
  while (::waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
  }
}

std::span<const std::int16_t> DecoderChild::read(std::span<std::int16_t> buffer) {
  constexpr std::size_t frame = playedChannels * sizeof(std::int16_t);
  auto* const bytes = reinterpret_cast<char*>(buffer.data());
  const std::size_t room = buffer.size_bytes() / frame * frame;
  std::size_t filled = 0;
  do {
    const ssize_t count = ::read(samples_, bytes + filled, room - filled);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) {
      requireSuccess();
      filled -= filled % frame;
      break;
    }
    filled += static_cast<std::size_t>(count);
  } while (filled % frame != 0);
  return buffer.first(filled / sizeof(std::int16_t));
}

void DecoderChild::requireSuccess() {
  if (process_ < 0) return;
  int status = 0;
  while (::waitpid(process_, &status, 0) < 0 && errno == EINTR) {
  }
  process_ = -1;
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return;
  const bool isSilent = WIFEXITED(status) && WEXITSTATUS(status) == noAudio;
  throw Failure(isSilent ? "noAudio" : "unreadable", "the decoder ended early");
}

}  // namespace nomely::media
