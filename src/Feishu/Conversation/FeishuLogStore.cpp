#include "Feishu/Conversation/FeishuLogStore.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <exception>
#include <map>
#include <string_view>
#include <utility>

#include "Platform/Concurrency/NotificationCenter.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"
#include "Platform/System/Uuid.h"

namespace nomely {
namespace {

constexpr unsigned ownerOnly = 0600;
constexpr std::uint64_t mostBytes = std::uint64_t{256} << 20;

bool isSame(const std::optional<FileAttributes>& left, const std::optional<FileAttributes>& right) {
  if (!left || !right) return !left && !right;
  return left->device == right->device && left->fileNumber == right->fileNumber &&
         left->size == right->size && left->modified == right->modified;
}

template <typename Item>
void keepLatest(std::vector<Item>& items) {
  if (items.size() > FeishuLogStore::mostEntries)
    items.erase(items.begin(), items.end() - FeishuLogStore::mostEntries);
}

// The latest that are whole.
std::vector<std::string> linesIn(std::string_view bytes) {
  std::vector<std::string> lines;
  while (!bytes.empty()) {
    const std::string_view line = bytes.substr(0, bytes.find('\n'));
    if (FeishuLogEntry::fromLine(line)) lines.emplace_back(line);
    bytes.remove_prefix(std::min(line.size() + 1, bytes.size()));
  }
  keepLatest(lines);
  return lines;
}

std::string joined(const std::vector<std::string>& lines) {
  std::string bytes;
  for (const std::string& line : lines) bytes.append(line) += '\n';
  return bytes;
}

void announce() {
  NotificationCenter::shared().post(Notifications::feishuLogChanged);
}

}  // namespace

std::shared_ptr<FeishuLogStore> FeishuLogStore::of(const StoreContext& storage) {
  using Stores = std::map<const DataWriteCoordinator*, std::weak_ptr<FeishuLogStore>>;
  static std::mutex registryLock;
  static auto* const stores = new Stores;  // logging may outlive the statics of other files

  const std::lock_guard lock(registryLock);
  std::weak_ptr<FeishuLogStore>& known = (*stores)[&storage.gate];
  auto store = known.lock();
  if (!store) {
    store.reset(new FeishuLogStore(storage));
    known = store;
  }
  return store;
}

FeishuLogStore::FeishuLogStore(const StoreContext& storage)
    : storage_(storage), file_(storage.paths.metaFolder() / BotFiles::log) {}

void FeishuLogStore::logIncoming(const std::string& text) {
  log(FeishuLogEntry::Direction::incoming, text);
}

void FeishuLogStore::logOutgoing(const std::string& text) {
  log(FeishuLogEntry::Direction::outgoing, text);
}

void FeishuLogStore::log(FeishuLogEntry::Direction direction, const std::string& text) {
  append({.id = Uuid::random().string(),
          .direction = direction,
          .timestamp = storage_.clock.now(),
          .text = text});
}

void FeishuLogStore::append(FeishuLogEntry entry) {
  {
    const std::lock_guard lock(pendingLock_);
    pending_.push_back(std::move(entry));
    // While a disk hangs, a chat that goes on must not fill the memory.
    keepLatest(pending_);
    if (pending_.size() > 1) return;  // whoever came first has asked for the writing
  }
  queue_.async([this] { writePending(); });
}

void FeishuLogStore::writePending() {
  std::vector<FeishuLogEntry> added;
  {
    const std::lock_guard lock(pendingLock_);
    added = std::exchange(pending_, {});
  }
  try {
    // The gate would make it: of a disk that isn't mounted, as a root that looks empty.
    if (!storage_.files.isDirectory(storage_.paths.rootURL)) throw FileError("写入", file_, ENOENT);
    std::vector<std::string> lines;
    lines.reserve(added.size());
    for (const FeishuLogEntry& entry : added) lines.push_back(entry.line());
    storage_.write([&] { write(lines); });
  } catch (const std::exception& error) {
    cache_.reset();  // the file may hold a part of a line
    return Log::error(LogChannel::feishu, "日志追加失败：{}", error.what());
  }
  announce();
}

void FeishuLogStore::write(const std::vector<std::string>& added) {
  storage_.prepareFolder(storage_.paths.metaFolder());
  refresh();
  const FileManager& files = storage_.files;
  if (seen_ && seen_->permissions != ownerOnly) files.setPermissions(file_, ownerOnly);
  std::vector<std::string>& lines = *cache_;
  lines.insert(lines.end(), added.begin(), added.end());
  if (lines.size() > mostEntries) {
    keepLatest(lines);
    files.writeAtomically(file_, joined(lines), FileManager::Durability::later);
  } else if (!files.append(file_, (endsInHalfLine_ ? "\n" : "") + joined(added))) {
    (void)files.createAtomically(file_, joined(added), ownerOnly);
  }
  seen_ = files.attributes(file_);
  endsInHalfLine_ = false;
}

void FeishuLogStore::refresh() {
  // Taken before reading: what is added meanwhile is then seen to be new.
  const auto found = storage_.files.attributes(file_);
  if (cache_ && isSame(found, seen_)) return;
  cache_.reset();
  const std::string bytes = storage_.files.read(file_, mostBytes).value_or("");
  endsInHalfLine_ = !bytes.empty() && bytes.back() != '\n';
  seen_ = found;
  cache_ = linesIn(bytes);
}

// Those who are told of a change are told on the queue, and may call from there.
template <typename Body>
decltype(auto) FeishuLogStore::onQueue(Body body) {
  return queue_.isCurrent() ? body() : queue_.sync(body);
}

std::vector<FeishuLogEntry> FeishuLogStore::load() {
  return onQueue([this] {
    refresh();
    std::vector<FeishuLogEntry> entries;
    entries.reserve(cache_->size());
    for (const std::string& line : *cache_)
      entries.push_back(FeishuLogEntry::fromLine(line).value());
    return entries;
  });
}

void FeishuLogStore::clear() {
  onQueue([this] {
    storage_.write([this] { storage_.files.removeFile(file_); });
    seen_.reset();
    endsInHalfLine_ = false;
    cache_.emplace();
  });
  announce();
}

}  // namespace nomely
