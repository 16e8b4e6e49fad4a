#pragma once

#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "Support/Matchers.h"
#include "Support/ProgramRun.h"
#include "Support/TemporaryFolder.h"
#include "Support/TestPaths.h"

namespace nomely::test {

using Json = nlohmann::ordered_json;

// Runs the real program on a root of its own.
class CommandTest : public testing::Test {
 protected:
  [[nodiscard]] ProgramResult run(ProgramCall call) const {
    call.environment.emplace("NOMELY_ROOT", root.string());
    return runProgram(TestPaths::nomely, home.path(), call);
  }
  [[nodiscard]] ProgramResult run(std::vector<std::string> arguments) const {
    return run(ProgramCall{.arguments = std::move(arguments)});
  }

  // The same on a terminal of its own.
  [[nodiscard]] std::unique_ptr<TerminalRun> start(ProgramCall call, TerminalSize size = {}) const {
    call.environment.emplace("NOMELY_ROOT", root.string());
    return std::make_unique<TerminalRun>(TestPaths::nomely, home.path(), std::move(call), size);
  }

  // Runs a command that must succeed and returns what it printed under --json.
  [[nodiscard]] Json json(std::vector<std::string> arguments) const {
    arguments.emplace_back("--json");
    const ProgramResult result = run(std::move(arguments));
    EXPECT_EQ(result.status, 0) << result.errors;
    return Json::parse(result.output);
  }

  void expectFailure(const std::vector<std::string>& arguments, int status,
                     const std::string& says) const {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const ProgramResult result = run(arguments);
    EXPECT_EQ(result.status, status);
    EXPECT_THAT(result.errors, HasSubstr(says));
  }

  // Adds a memo on 2026-03-01.
  [[nodiscard]] Json add(const std::string& text, std::vector<std::string> more = {}) const {
    more.insert(more.begin(), {"add", text, "--date", "2026-03-01"});
    return json(std::move(more));
  }

  [[nodiscard]] std::string memoFile(const std::string& name) const {
    return readFile(root / "2026-03-01" / name);
  }

  TemporaryFolder home;
  std::filesystem::path root = home.path() / "root";
};

}  // namespace nomely::test
