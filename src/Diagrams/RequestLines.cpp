#include "Diagrams/RequestLines.h"

#include <array>
#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace nomely {

RequestLines::RequestLines(QObject* parent)
    : QObject(parent), notifier_(STDIN_FILENO, QSocketNotifier::Read) {
  ::fcntl(STDIN_FILENO, F_SETFL, ::fcntl(STDIN_FILENO, F_GETFL) | O_NONBLOCK);
  connect(&notifier_, &QSocketNotifier::activated, this, &RequestLines::readAvailable);
}

void RequestLines::readAvailable() {
  std::array<char, 65536> buffer{};
  const ssize_t count = ::read(STDIN_FILENO, buffer.data(), buffer.size());
  if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
  if (count <= 0 || unread_.size() > longestLine) {
    notifier_.setEnabled(false);
    emit ended();
    return;
  }
  unread_.append(buffer.data(), count);
  for (qsizetype end = 0; (end = unread_.indexOf('\n')) >= 0;) {
    const QByteArray line = unread_.left(end);
    unread_.remove(0, end + 1);
    emit lineRead(line);
  }
}

}  // namespace nomely
