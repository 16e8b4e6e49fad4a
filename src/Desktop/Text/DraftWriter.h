#pragma once

#include <QTimer>
#include <functional>
#include <mutex>
#include <optional>

#include "Platform/Concurrency/SerialQueue.h"

namespace nomely {

// Brings what is being typed to the disk, close behind the typing: some keys at a time, on a thread
// of its own, in order. While the disk is slow the newest state takes the place of those that wait.
// Calls come from the main thread.
class DraftWriter {
 public:
  // Runs on the writer's thread. False: it is on no disk, and is to be tried again.
  using Write = std::function<bool()>;
  // `snapshot` takes the state as it is now and returns what writes it.
  explicit DraftWriter(std::function<Write()> snapshot);

  // The state has changed: it is written within 200 ms, and what the disk takes.
  void changed();
  // Has it written now, whatever becomes of the state after this call.
  void push();
  // Returns when everything has been written, or tried.
  void flush();
  // Forgets a change that isn't written yet.
  void cancel() { timer_.stop(); }

 private:
  void take();
  void writeNewest();
  void run(const Write& write);

  std::function<Write()> snapshot_;
  QTimer timer_;
  QTimer again_;
  std::mutex mutex_;
  std::optional<Write> newest_;  // guarded by mutex_
  SerialQueue queue_{"com.nomely.draft"};
};

}  // namespace nomely
