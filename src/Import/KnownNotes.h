#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string_view>
#include <unordered_map>

#include "Core/Storage/DayStore.h"

namespace nomely {

// Which texts the days have, so that none is imported twice. A text is the same when it is, white
// space around it apart, on the same day; only a digest of it is held. Each day is read once, when
// it is first asked for. For one thread.
class KnownNotes {
 public:
  struct Known {
    std::int64_t seqNumber = 0;
    bool hasAttachments = false;
    bool isWritten = true;
  };

  explicit KnownNotes(const DayStore& days) : days_(days) {}

  // The memo with that text; null when there is none. Throws FileError when the day can't be
  // listed, or a file there not be read: taking it for empty would bring everything in again.
  [[nodiscard]] Known* find(Day day, std::string_view body);
  // A memo that is about to be written under the day's next number. What is returned stays valid.
  Known& add(Day day, std::string_view body, bool hasAttachments);

 private:
  struct Digest {
    std::uint64_t first = 0;
    std::uint64_t second = 0;
    friend bool operator==(const Digest&, const Digest&) = default;
  };
  struct ByFirst {
    std::size_t operator()(const Digest& digest) const noexcept { return digest.first; }
  };
  struct KnownDay {
    std::unordered_map<Digest, Known, ByFirst> notes = {};
    std::int64_t highest = 0;
  };

  [[nodiscard]] static Digest digestOf(std::string_view body);
  [[nodiscard]] KnownDay& known(Day day);
  [[nodiscard]] std::optional<Memo> read(Day day, std::int64_t number) const;

  const DayStore& days_;
  std::map<Day, KnownDay> known_;
};

}  // namespace nomely
