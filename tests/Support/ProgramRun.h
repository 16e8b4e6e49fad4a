#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

namespace nomely::test {

// What standard input of a started program is.
enum class InputKind { bytes, terminal };

struct ProgramCall {
  std::vector<std::string> arguments;  // after the program's name
  std::string input = {};
  InputKind inputKind = InputKind::bytes;
  // Added to an environment that holds nothing but PATH, HOME, TZ and what sanitizers need.
  std::map<std::string, std::string> environment = {};
};

struct ProgramResult {
  int status = -1;  // exit status, or 128 plus the signal
  std::string output;
  std::string errors;
};

// Runs a program to its end with `home` as home folder.
[[nodiscard]] ProgramResult runProgram(const std::filesystem::path& program,
                                       const std::filesystem::path& home, const ProgramCall& call);

struct TerminalSize {
  unsigned short columns = 80;
  unsigned short rows = 24;
};

// A program whose three standard streams are a terminal of its own, used step by step as a person
// would: "\x03" is Ctrl-C, "\t" the tab key. `call` gives arguments and environment; TERM is
// xterm-256color unless told. Every wait has a deadline and throws with what was seen until then.
class TerminalRun {
 public:
  TerminalRun(const std::filesystem::path& program, const std::filesystem::path& home,
              ProgramCall call, TerminalSize size = {});
  // Kills the program if it still runs.
  ~TerminalRun();
  TerminalRun(const TerminalRun&) = delete;
  TerminalRun& operator=(const TerminalRun&) = delete;

  void type(std::string_view keys) const;
  // Waits until what the screen received since the last call contains `text`, and returns that up
  // to the end of `text`.
  std::string waitFor(std::string_view text);
  // Waits for the program's end and returns its status as ProgramResult has it.
  int finish();
  // All that the screen received until now, escape sequences and "\r\n" as they came.
  [[nodiscard]] const std::string& screen() const { return screen_; }

 private:
  // Waits for more; false when the program has let go of its terminal.
  bool receive(std::chrono::steady_clock::time_point deadline);

  int terminal_ = -1;  // the end at which a person would sit
  pid_t program_ = -1;
  std::string screen_;
  std::size_t seen_ = 0;  // bytes of screen_ that waitFor has returned
};

}  // namespace nomely::test
