#include "Platform/System/Uuid.h"

#include <atomic>
#include <cstring>
#include <span>

#include <pthread.h>

#include "Platform/System/RandomBytes.h"

namespace nomely {
namespace {

// A forked child has its parent's buffer and must not draw the same identities from it.
std::atomic<unsigned>& forkGeneration() {
  static std::atomic<unsigned> generation{1};
  static const int registered = ::pthread_atfork(nullptr, nullptr, [] { generation.fetch_add(1); });
  (void)registered;
  return generation;
}

std::array<std::uint8_t, 16> randomBytes() {
  struct Buffer {
    std::array<std::uint8_t, 1024> bytes;
    std::size_t used = sizeof bytes;
    unsigned generation = 0;
  };
  thread_local Buffer buffer;
  std::array<std::uint8_t, 16> result{};
  if (const unsigned generation = forkGeneration().load(std::memory_order_relaxed);
      buffer.used + result.size() > buffer.bytes.size() || buffer.generation != generation) {
    fillWithRandom(buffer.bytes);
    buffer.used = 0;
    buffer.generation = generation;
  }
  std::memcpy(result.data(), buffer.bytes.data() + buffer.used, result.size());
  buffer.used += result.size();
  return result;
}

std::string hexadecimal(std::span<const std::uint8_t> bytes, const char* digits) {
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const std::uint8_t byte : bytes) {
    text += digits[byte >> 4U];
    text += digits[byte & 15U];
  }
  return text;
}

}  // namespace

Uuid Uuid::random() {
  Uuid uuid;
  uuid.bytes_ = randomBytes();
  uuid.bytes_[6] = static_cast<std::uint8_t>((uuid.bytes_[6] & 0x0FU) | 0x40U);
  uuid.bytes_[8] = static_cast<std::uint8_t>((uuid.bytes_[8] & 0x3FU) | 0x80U);
  return uuid;
}

std::string Uuid::string() const {
  std::string text = hexadecimal(bytes_, "0123456789ABCDEF");
  for (const std::size_t at : {8U, 13U, 18U, 23U}) text.insert(at, 1, '-');
  return text;
}

std::string Uuid::compact() const {
  return hexadecimal(bytes_, "0123456789abcdef");
}

}  // namespace nomely
