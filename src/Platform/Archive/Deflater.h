#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace nomely {

// Compresses by DEFLATE, one text after another with the same memory. For one thread at a time.
class Deflater {
 public:
  Deflater();
  ~Deflater();
  Deflater(const Deflater&) = delete;
  Deflater& operator=(const Deflater&) = delete;

  // What stands for `bytes`, till the next call; empty when that is not shorter.
  [[nodiscard]] std::string_view whole(std::string_view bytes);

  // Contents that come piece by piece; `sink` gets what stands for them.
  using Sink = std::function<void(std::string_view piece)>;
  class Stream {
   public:
    explicit Stream(Sink sink);
    ~Stream();
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;
    void add(std::string_view piece);
    void finish();

   private:
    struct State;
    void run(int flush);
    Sink sink_;
    std::unique_ptr<State> state_;
  };

 private:
  struct Whole;
  std::unique_ptr<Whole> whole_;
};

}  // namespace nomely
