#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace nomely {

// Events that travel in several frames, until all their pieces have come. What is dropped leaves a
// line in the log; the platform sends it again. On one thread.
class FragmentJoiner {
 public:
  static constexpr std::int64_t mostFragments = 256;  // of an event
  // Of all that waits, with what keeping it costs; the event that has waited longest goes first.
  static constexpr std::size_t mostBytes = std::size_t{64} << 20;

  struct Fragment {
    std::string messageId = {};  // of the event, the same in all its fragments
    std::int64_t sum = 1;        // how many there are
    std::int64_t seq = 0;        // which this is, from 0
    std::string payload = {};
  };

  // The whole event, when this was the last fragment missing. One that comes again replaces the
  // earlier one; one that contradicts the event's first about `sum` is dropped.
  [[nodiscard]] std::optional<std::string> add(Fragment fragment);

  [[nodiscard]] std::size_t bytes() const { return bytes_; }

 private:
  struct Pending {
    std::uint64_t number = 0;  // in the order of the first fragments
    std::int64_t sum = 0;
    std::map<std::int64_t, std::string> payloads = {};
  };
  using Waiting = std::map<std::string, Pending>;

  void dropOldest();
  void remove(Waiting::iterator which);

  Waiting waiting_;
  std::map<std::uint64_t, Waiting::iterator> byAge_;
  std::uint64_t next_ = 0;
  std::size_t bytes_ = 0;
};

}  // namespace nomely
