#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <list>
#include <mutex>
#include <string_view>
#include <thread>

namespace nomely::test {

// A port of 127.0.0.1 with a thread for each connection to it. Destruction breaks off what is under
// way. Safe on any thread.
class LoopbackListener {
 public:
  // Called on the connection's thread; when it returns the connection ends.
  using Serve = std::function<void(int socket)>;

  explicit LoopbackListener(Serve serve);
  ~LoopbackListener();
  LoopbackListener(const LoopbackListener&) = delete;
  LoopbackListener& operator=(const LoopbackListener&) = delete;

  [[nodiscard]] std::uint16_t port() const { return port_; }
  // Returns once every connection has ended; throws when they don't in time.
  void awaitQuiet() const;

 private:
  struct Connection;

  void accept();

  const Serve serve_;
  int listening_ = -1;
  std::uint16_t port_ = 0;
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::list<Connection> connections_;
  bool closing_ = false;
  std::jthread accepting_;
};

// Blocks until all is handed to the network; false when the other side has left.
[[nodiscard]] bool sendAll(int socket, std::string_view bytes);

}  // namespace nomely::test
