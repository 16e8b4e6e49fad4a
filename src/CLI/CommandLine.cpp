#include "CLI/CommandLine.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <new>

#include <fmt/format.h>
#include <signal.h>
#include <unistd.h>

#include "CLI/CompletionAnswer.h"
#include "CLI/Interruption.h"
#include "CLI/Parser.h"
#include "CLI/UsageError.h"
#include "Core/Storage/WriteError.h"
#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

enum ExitStatus { done = 0, failed = 1, wrongUsage = 2, changedElsewhere = 3, noSuchName = 4 };

int statusOf(const Error& error) {
  if (dynamic_cast<const UsageError*>(&error) != nullptr) return wrongUsage;
  if (dynamic_cast<const NameNotFoundError*>(&error) != nullptr) return noSuchName;
  if (dynamic_cast<const CancellationError*>(&error) != nullptr) return interruptedStatus;
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

// Short work ends at once: every write so far is whole on disk, and one under way leaves at most a
// hidden temporary. Long work is hosted by the session and ends by itself.
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

void run(Parser& parser, Session& session, const std::vector<std::string>& arguments) {
  const Parser::Request request = parser.parse(arguments);
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
  session.flush();
}

// Of an exception that nobody gave words for a user: its own go to the log.
std::string textOfUnknown(const std::exception& error) {
  Log::information(LogChannel::app, "runCommandLine: {}", error.what());
  if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) return "内存不足，操作没有完成";
  return "程序内部出错，操作没有完成。加 -v 再试一次可以看到原因";
}

int runReported(Session& session, const std::vector<std::string>& arguments) {
  try {
    Parser parser(session);
    if (!arguments.empty() && arguments.front() == CompletionAnswer::commandName)
      session.print(
          CompletionAnswer::to({arguments.begin() + 1, arguments.end()}, parser.syntax(), session));
    else
      run(parser, session, arguments);
    return done;
  } catch (const Error& error) {
    report(session, error.code(), error.what());
    return statusOf(error);
  } catch (const std::filesystem::filesystem_error& error) {
    const FileError told("访问", error.path1(), error.code().value());
    report(session, told.code(), told.what());
    return failed;
  } catch (const std::exception& error) {
    report(session, "internal", textOfUnknown(error));
    return failed;
  }
}

}  // namespace

int runCommandLine(const std::vector<std::string>& arguments, Machine machine) {
  prepareProcess();
  Session session(std::move(machine));
  // A command line that can't be parsed is reported in the form that it asks for.
  session.options.json = std::ranges::find(arguments, "--json") != arguments.end();
  return runReported(session, arguments);
}

}  // namespace nomely
