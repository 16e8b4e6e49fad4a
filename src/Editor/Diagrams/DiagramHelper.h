#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "Editor/Diagrams/DiagramPicture.h"
#include "Platform/Concurrency/Timers.h"
#include "Platform/Text/Json.h"

namespace nomely {

class HelperProcess;

// Draws with the program `nomely-diagrams`, which is started when a diagram needs it and ends by
// itself when none has for a while. One diagram at a time; whoever comes meanwhile waits. A program
// that hangs is killed. Safe on any thread.
class DiagramHelper : public DiagramRenderer {
 public:
  struct Settings {
    std::string program = "nomely-diagrams";
    // Longer than the program itself gives a diagram, and its start.
    std::chrono::milliseconds patience = std::chrono::seconds(25);
    // So many ends without an answer between, and it isn't started any more.
    int greatestEnds = 6;
    // Bytes of a source. The library draws 50,000 characters at most.
    std::size_t longestSource = 200'000;
  };

  DiagramHelper(Timers& timers, Settings settings);
  explicit DiagramHelper(Timers& timers) : DiagramHelper(timers, {}) {}
  ~DiagramHelper() override;

  // Whether the program is installed.
  [[nodiscard]] bool isInstalled() const;

  [[nodiscard]] DiagramPicture render(const DiagramRequest& request,
                                      const std::stop_token& stop) override;

 private:
  class Turn;
  // Its answer to the line that has this identity; absent when it ended instead.
  [[nodiscard]] std::optional<Json> ask(const std::string& line, std::uint64_t id,
                                        const std::stop_token& stop);
  [[nodiscard]] Json answerTo(const DiagramRequest& request, const std::stop_token& stop);

  Timers& timers_;
  const Settings settings_;
  std::mutex mutex_;
  std::condition_variable_any freed_;
  bool isTaken_ = false;  // by the call that may use what follows
  std::shared_ptr<HelperProcess> process_;
  std::uint64_t lastId_ = 0;
  int ends_ = 0;  // without an answer since
};

}  // namespace nomely
