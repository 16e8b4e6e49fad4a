#include "Support/LoopbackListener.h"

#include <algorithm>
#include <stdexcept>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "Support/Deadline.h"

namespace nomely::test {

struct LoopbackListener::Connection {
  ~Connection() {
    thread.join();
    ::close(socket);
  }

  const int socket;
  std::thread thread{};
  bool hasEnded = false;  // by the listener's lock
};

LoopbackListener::LoopbackListener(Serve serve) : serve_(std::move(serve)) {
  listening_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  auto* const any = reinterpret_cast<sockaddr*>(&address);
  if (::bind(listening_, any, length) != 0 || ::listen(listening_, 64) != 0 ||
      ::getsockname(listening_, any, &length) != 0)
    throw std::runtime_error("no port to listen on");
  port_ = ntohs(address.sin_port);
  accepting_ = std::jthread([this] { accept(); });
}

LoopbackListener::~LoopbackListener() {
  {
    const std::lock_guard lock(mutex_);
    closing_ = true;
    for (const Connection& connection : connections_) ::shutdown(connection.socket, SHUT_RDWR);
  }
  ::shutdown(listening_, SHUT_RDWR);
  accepting_.join();
  connections_.clear();
  ::close(listening_);
}

void LoopbackListener::awaitQuiet() const {
  std::unique_lock lock(mutex_);
  if (!changed_.wait_for(lock, longestWait,
                         [&] { return std::ranges::all_of(connections_, &Connection::hasEnded); }))
    throw std::runtime_error("a connection stays open");
}

void LoopbackListener::accept() {
  for (;;) {
    const int socket = ::accept4(listening_, nullptr, nullptr, SOCK_CLOEXEC);
    const std::lock_guard lock(mutex_);
    if (closing_) {
      if (socket >= 0) ::close(socket);
      return;
    }
    if (socket < 0) continue;
    // Or thousands of connections would use up the descriptors.
    connections_.remove_if([](const Connection& connection) { return connection.hasEnded; });
    Connection& connection = connections_.emplace_back(socket);
    connection.thread = std::thread([this, &connection] {
      serve_(connection.socket);
      ::shutdown(connection.socket, SHUT_RDWR);
      const std::lock_guard ended(mutex_);
      connection.hasEnded = true;
      changed_.notify_all();
    });
  }
}

bool sendAll(int socket, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

}  // namespace nomely::test
