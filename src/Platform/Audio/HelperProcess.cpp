#include "Platform/Audio/HelperProcess.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"

namespace nomely {
namespace {

constexpr std::size_t longestLine = std::size_t{4} << 20;
constexpr int fileNumber = 3;  // of the child

std::filesystem::path pathOf(const std::string& program) {
  std::error_code ignored;
  const auto folder = std::filesystem::read_symlink("/proc/self/exe", ignored).parent_path();
  for (const auto& path : {folder / program, folder / "../libexec/nomely" / program})
    if (::access(path.c_str(), X_OK) == 0) return path;
  return {};
}

[[noreturn]] void fail(const char* operation, const std::string& what) {
  throw FileError(operation, what, errno);
}

// What a child is given stands above the numbers that it gets there, so that none overwrites
// another.
Descriptor raised(int descriptor) {
  constexpr int above = 10;
  Descriptor copy(::fcntl(descriptor, F_DUPFD_CLOEXEC, above));
  if (copy.get() < 0) fail("打开", "管道");
  return copy;
}

class SpawnSettings {
 public:
  SpawnSettings() {
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawnattr_init(&attributes);
    sigset_t none;
    ::sigemptyset(&none);
    sigset_t usual;
    ::sigfillset(&usual);
    ::posix_spawnattr_setsigmask(&attributes, &none);
    ::posix_spawnattr_setsigdefault(&attributes, &usual);
    // Ctrl-C is for the program that started it, which then says what is to become of the work.
    ::posix_spawnattr_setpgroup(&attributes, 0);
    ::posix_spawnattr_setflags(
        &attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
  }
  ~SpawnSettings() {
    ::posix_spawn_file_actions_destroy(&actions);
    ::posix_spawnattr_destroy(&attributes);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;

  posix_spawn_file_actions_t actions{};
  posix_spawnattr_t attributes{};
};

}  // namespace

HelperProcess::MissingError::MissingError(const std::string& program)
    : Error("helper.missing", fmt::format("找不到程序 {}，请重新安装 Nomely", program)) {}

bool HelperProcess::isInstalled(const std::string& program) {
  return !pathOf(program).empty();
}

HelperProcess::HelperProcess(const Call& call) {
  const std::filesystem::path path = pathOf(call.program);
  if (path.empty()) throw MissingError(call.program);

  // Sockets, since writing to one can be kept from raising SIGPIPE.
  std::array<int, 2> ends{};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) fail("打开", "管道");
  input_ = Descriptor(ends[0]);
  const Descriptor itsInput(ends[1]);
  Pipe answers = makePipe();
  answers_ = std::move(answers.reading);

  SpawnSettings settings;
  std::vector<Descriptor> given;
  const auto give = [&](int descriptor, int number) {
    given.push_back(raised(descriptor));
    ::posix_spawn_file_actions_adddup2(&settings.actions, given.back().get(), number);
  };
  give(call.input >= 0 ? call.input : itsInput.get(), STDIN_FILENO);
  give(answers.writing.get(), STDOUT_FILENO);
  if (call.file >= 0) give(call.file, fileNumber);

  std::vector<std::string> words{call.program};
  words.insert(words.end(), call.arguments.begin(), call.arguments.end());
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  errno = ::posix_spawn(&process_, path.c_str(), &settings.actions, &settings.attributes,
                        pointers.data(), environ);
  if (errno != 0) {
    process_ = -1;
    fail("启动", path.string());
  }
}

HelperProcess::~HelperProcess() {
  kill();
}

void HelperProcess::kill() noexcept {
  if (process_ < 0) return;
  ::kill(process_, SIGKILL);
  while (::waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
  }
  process_ = -1;
}

void HelperProcess::send(std::string_view line) const {
  std::string text(line);
  text += '\n';
  for (std::string_view left = text; !left.empty();) {
    const ssize_t count = ::send(input_.get(), left.data(), left.size(), MSG_NOSIGNAL);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return;
    left.remove_prefix(static_cast<std::size_t>(count));
  }
}

std::optional<std::string> HelperProcess::readLine(const std::stop_token& stop) {
  for (;;) {
    if (const auto end = unread_.find('\n'); end != std::string::npos) {
      std::string line = unread_.substr(0, end);
      unread_.erase(0, end + 1);
      return line;
    }
    if (unread_.size() > longestLine) throw FileError("读取", "管道", EFBIG);
    std::array<char, 4096> buffer{};
    const std::size_t count = readFromPipe(answers_.get(), buffer, stop);
    if (count == 0) return std::nullopt;
    unread_.append(buffer.data(), count);
  }
}

std::size_t readFromPipe(int pipe, std::span<char> buffer, const std::stop_token& stop) {
  const Descriptor stopped(stop.stop_possible() ? ::eventfd(0, EFD_CLOEXEC) : -1);
  const std::stop_callback tell(stop, [&] {
    constexpr std::uint64_t one = 1;
    (void)!::write(stopped.get(), &one, sizeof one);
  });
  for (;;) {
    std::array<pollfd, 2> waited{{{pipe, POLLIN, 0}, {stopped.get(), POLLIN, 0}}};
    if (::poll(waited.data(), waited.size(), -1) < 0 && errno != EINTR) fail("读取", "管道");
    throwIfStopped(stop);
    if (waited[0].revents == 0) continue;
    const ssize_t count = ::read(pipe, buffer.data(), buffer.size());
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno != EINTR && errno != EAGAIN) fail("读取", "管道");
  }
}

Pipe makePipe() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) fail("打开", "管道");
  return {Descriptor(ends[0]), Descriptor(ends[1])};
}

}  // namespace nomely
