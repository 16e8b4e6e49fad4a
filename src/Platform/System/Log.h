#pragma once

#include <string>
#include <string_view>

#include <fmt/format.h>

namespace nomely {

enum class LogChannel { app, feishu, storage, importer };

enum class LogLevel { information, error, fault };

// The program's log: four channels that go to the journal where there is one. Nothing that is
// secret is ever logged. Safe on any thread; never throws.
class Log {
 public:
  // Lines at or above this level also go to standard error.
  enum class Echo { nothing, errors, everything };
  static void setEcho(Echo echo);

  static void write(LogChannel channel, LogLevel level, std::string_view message) noexcept;

  template <typename... Arguments>
  static void information(LogChannel channel, fmt::format_string<Arguments...> format,
                          Arguments&&... arguments) noexcept {
    writeFormatted(channel, LogLevel::information, format, arguments...);
  }
  template <typename... Arguments>
  static void error(LogChannel channel, fmt::format_string<Arguments...> format,
                    Arguments&&... arguments) noexcept {
    writeFormatted(channel, LogLevel::error, format, arguments...);
  }

 private:
  template <typename Format, typename... Arguments>
  static void writeFormatted(LogChannel channel, LogLevel level, Format format,
                             const Arguments&... arguments) noexcept {
    try {
      write(channel, level, fmt::format(fmt::runtime(format), arguments...));
    } catch (...) {
      write(channel, level, "(message could not be formatted)");
    }
  }
};

}  // namespace nomely
