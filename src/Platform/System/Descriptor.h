#pragma once

#include <utility>

#include <unistd.h>

namespace nomely {

// An open file descriptor, closed with its owner; -1 for none.
class Descriptor {
 public:
  explicit Descriptor(int number = -1) noexcept : number_(number) {}
  ~Descriptor() { close(); }
  Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    close();
    number_ = other.release();
    return *this;
  }

  [[nodiscard]] int get() const noexcept { return number_; }
  int release() noexcept { return std::exchange(number_, -1); }
  void close() noexcept {
    if (number_ >= 0) ::close(release());
  }

 private:
  int number_;
};

}  // namespace nomely
