#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include "Platform/Files/OpenFolder.h"

namespace nomely {

// Undoes DEFLATE, for one entry after another with the same memory. For one thread at a time.
class Inflater {
 public:
  Inflater();
  ~Inflater();
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;

  // The `size` bytes that `compressed` stands for, till the next call; absent when it stands for
  // anything else.
  [[nodiscard]] std::optional<std::string_view> whole(std::string_view compressed,
                                                      std::size_t size);

  using Source = std::function<std::string_view()>;  // the next piece; empty: no more
  using Sink = std::function<void(std::string_view piece)>;
  // The same piece by piece. `sink` gets `size` bytes at most. Returns whether it got all of them
  // and `source` had no more than they took.
  [[nodiscard]] bool stream(const Source& source, std::uint64_t size, const Sink& sink);

 private:
  struct Whole;
  struct Stream;
  std::unique_ptr<Whole> whole_;
  std::unique_ptr<Stream> stream_;
  ReadBuffer buffer_;
};

}  // namespace nomely
