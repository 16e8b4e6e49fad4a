#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace nomely::test {

// What standard input of a started program is.
enum class InputKind { bytes, terminal };

struct ProgramCall {
  std::vector<std::string> arguments;  // behind the program's name
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

}  // namespace nomely::test
