#include "CLI/CommandLine.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <exception>

#include <fmt/format.h>
#include <signal.h>
#include <unistd.h>

#include "CLI/Parser.h"
#include "CLI/UsageError.h"
#include "Core/Storage/WriteError.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

enum ExitStatus { done = 0, failed = 1, wrongUsage = 2, changedElsewhere = 3, noSuchName = 4 };

constexpr int interruptedStatus = 130;

int statusOf(const Error& error) {
  if (dynamic_cast<const UsageError*>(&error) != nullptr) return wrongUsage;
  if (dynamic_cast<const NameNotFoundError*>(&error) != nullptr) return noSuchName;
  if (const auto* refused = dynamic_cast<const WriteError*>(&error))
    return refused->kind() == WriteError::Kind::maintenance ? failed : changedElsewhere;
  return failed;
}

void report(const Session& session, std::string_view code, std::string_view message) {
  fmt::print(stderr, "{}{}\n", session.errorStyle().error("错误："), Terminal::printable(message));
  if (!session.isJson()) return;
  try {
    session.printJson({{"error", {{"code", code}, {"message", message}}}});
  } catch (const Error&) {
    // Standard error has the same message.
  }
}

// Every write so far is whole on disk, and one under way leaves at most a hidden temporary.
extern "C" void exitInterrupted(int) {
  ::_exit(interruptedStatus);
}

void prepareProcess() {
  struct sigaction action {};
  action.sa_handler = exitInterrupted;
  ::sigaction(SIGINT, &action, nullptr);
  // A reader that has seen enough ends the program without a word.
  ::signal(SIGPIPE, SIG_DFL);
}

void run(Parser& parser, Session& session, std::vector<std::string> arguments) {
  const Parser::Request request = parser.parse(std::move(arguments));
  if (session.options.verbose)
    Log::setEcho(Log::Echo::everything);
  else if (session.options.quiet)
    Log::setEcho(Log::Echo::nothing);
  if (!request.help.empty())
    session.print(request.help);
  else if (request.command != nullptr)
    request.command->run(session);
  else
    showToday(session);
  if (std::fflush(stdout) != 0) throw FileError("写入", "标准输出", errno);
}

}  // namespace

int runCommandLine(std::vector<std::string> arguments, Environment environment) {
  prepareProcess();
  Session session(std::move(environment));
  // A command line that can't be parsed is reported in the form that it asks for.
  session.options.json = std::ranges::find(arguments, "--json") != arguments.end();
  try {
    Parser parser(session);
    run(parser, session, std::move(arguments));
    return done;
  } catch (const Error& error) {
    report(session, error.code(), error.what());
    return statusOf(error);
  } catch (const std::exception& error) {
    report(session, "internal", error.what());
    return failed;
  }
}

}  // namespace nomely
