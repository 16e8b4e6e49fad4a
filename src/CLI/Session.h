#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <string_view>

#include "App/Application.h"
#include "CLI/Terminal.h"
#include "Core/Query/RootScan.h"
#include "Platform/Audio/AudioCapture.h"
#include "Platform/Concurrency/RunLoop.h"
#include "Platform/Concurrency/Subscription.h"
#include "Platform/Concurrency/Timers.h"
#include "Platform/Network/HttpClient.h"
#include "Platform/Network/WebSocketClient.h"
#include "Platform/System/Environment.h"
#include "Platform/Text/Json.h"

namespace nomely {

// What stands before or after every command.
struct GlobalOptions {
  std::string root;
  std::string color = "auto";
  bool json = false;
  bool noInput = false;
  bool yes = false;
  bool quiet = false;
  bool verbose = false;
};

// What the machine gives a run of the program. What is referred to must outlive that.
struct Machine {
  Environment environment;
  const Clock& clock;
  FileSystem& fileSystem;
  SecretBackend& secrets;
  HttpClient& http;
  WebSocketClient& webSockets;
  Timers& timers;
  AudioCapture& audio;
};

// One run of a command: its options, its streams, and the application it works on.
class Session {
 public:
  explicit Session(Machine machine);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  GlobalOptions options;  // filled while the command line is parsed

  [[nodiscard]] const Environment& environment() const { return machine_.environment; }
  [[nodiscard]] const Clock& clock() const { return machine_.clock; }
  [[nodiscard]] HttpClient& http() const { return machine_.http; }
  [[nodiscard]] AudioCapture& audio() const { return machine_.audio; }
  [[nodiscard]] FileManager files() const { return FileManager(machine_.fileSystem); }

  // Built when first asked for. Throws FileError for a root that is no folder, and Error
  // (root.rescue) for a missing one beside which a restore has left what it held.
  [[nodiscard]] Application& application();
  // Before that: a missing root is no reason to stop, since the command tells the way back, or
  // makes one anew.
  void doWithoutRoot() { doesWithoutRoot_ = true; }
  [[nodiscard]] const DayStore& dayStore() { return application().dayStore(); }
  [[nodiscard]] const MemoService& memos() { return application().memos(); }
  [[nodiscard]] AppSettings& settings() { return application().settings(); }

  // Whether the data root is there. What reads it alone says so when it isn't.
  [[nodiscard]] bool hasRoot();
  // Once.
  void tellOfMissingRoot();
  // By what made it.
  void tellOfNewRoot();
  // Reads the root without an index, and tells of each file that can't be read, once.
  [[nodiscard]] std::unique_ptr<RootScan> scan(std::stop_token stop = {});
  // The same for one; `what` is "<path>：<reason>". Any thread.
  void tellUnreadable(const std::string& what);

  // Runs long work on a thread of its own while the main executor runs here, and returns or throws
  // as it does. An interrupt stops its token; work that ends with CancellationError then ends the
  // program with status 130.
  void host(const std::function<void(const std::stop_token& stop)>& work);
  // The same for work that goes on until it is asked to stop, by SIGINT or SIGTERM. SIGHUP calls
  // `onReload` on the main executor.
  void hostResident(const std::function<void(const std::stop_token& stop)>& work,
                    const std::function<void()>& onReload);

  [[nodiscard]] bool isJson() const { return options.json; }
  [[nodiscard]] Style style() const;
  [[nodiscard]] Style errorStyle() const;
  // Of standard output as it was at the start: a pager may have taken its place since.
  [[nodiscard]] bool isOutputTerminal() const { return isOutputTerminal_; }
  [[nodiscard]] std::size_t columns() const { return columns_; }

  // Data, to standard output. Throws FileError when that can't be written.
  void print(std::string_view text) const;
  // Hands over what was printed so far. Throws FileError.
  void flush() const;
  // The one document of a command under --json.
  void printJson(const Json& json) const;
  // A remark, to standard error, unless the user asked for quiet.
  void say(std::string_view text) const;

  // Asks before something is destroyed: true for yes; a no is acknowledged. Throws UsageError where
  // nobody can answer and --yes was not given.
  [[nodiscard]] bool confirm(std::string_view question) const;

 private:
  [[nodiscard]] std::filesystem::path chosenRoot() const;
  void runBesides(const std::function<void(const std::stop_token& stop)>& work,
                  const std::stop_source& stop);
  [[nodiscard]] ColorMode colorMode() const;

  Machine machine_;
  bool isOutputTerminal_ = Terminal::isOutput();
  std::size_t columns_ = Terminal::columns();
  bool doesWithoutRoot_ = false;
  bool toldOfRoot_ = false;
  std::mutex unreadableLock_;
  std::set<std::string> unreadable_;  // told of
  RunLoop runLoop_;
  std::unique_ptr<Application> application_;
  std::atomic<bool> toldOfOriginal_ = false;
  Subscription originalKept_;
  Subscription passedOver_;
};

}  // namespace nomely
