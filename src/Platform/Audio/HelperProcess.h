#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

#include "Platform/Error.h"
#include "Platform/System/Descriptor.h"

namespace nomely {

// A program of ours that works for this one: it answers in lines. It has no terminal signals of its
// own and is killed when the object goes. One thread reads; any may send.
class HelperProcess {
 public:
  // The program isn't installed.
  class MissingError : public Error {
   public:
    explicit MissingError(const std::string& program);
  };

  struct Call {
    std::string program;  // beside this one, or in ../libexec/nomely
    std::vector<std::string> arguments = {};
    int input = -1;  // what it has as standard input; -1: what `send` gives it
    int file = -1;   // what it has as descriptor 3
  };

  // Throws MissingError, FileError.
  explicit HelperProcess(const Call& call);
  ~HelperProcess();
  HelperProcess(const HelperProcess&) = delete;
  HelperProcess& operator=(const HelperProcess&) = delete;

  // Whether the program is there.
  [[nodiscard]] static bool isInstalled(const std::string& program);

  // Gives it a line; one that it doesn't take any more is dropped.
  void send(std::string_view line) const;
  // Its next line, without the line feed; absent when it has ended. Throws CancellationError when
  // asked to stop meanwhile, and FileError for a line of megabytes.
  [[nodiscard]] std::optional<std::string> readLine(const std::stop_token& stop = {});
  void kill() noexcept;

 private:
  Descriptor input_;
  Descriptor answers_;
  std::string unread_;
  pid_t process_ = -1;
};

// Reads from a pipe into `buffer`; 0 at its end. Throws FileError, and CancellationError when asked
// to stop while it waits.
[[nodiscard]] std::size_t readFromPipe(int pipe, std::span<char> buffer,
                                       const std::stop_token& stop);
struct Pipe {
  Descriptor reading;
  Descriptor writing;
};
[[nodiscard]] Pipe makePipe();

}  // namespace nomely
