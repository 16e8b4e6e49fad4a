#include "Core/Lifecycle/DataDirWatcher.h"

#include <algorithm>
#include <utility>

#include "Core/Extensions/EngineNames.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"
#include "Platform/Text/Ascii.h"
#include "Platform/Time/Day.h"

namespace nomely {
namespace {

namespace fs = std::filesystem;

// As it stands where it leads nowhere: a file that is gone again.
std::string canonicalText(const fs::path& path) {
  std::error_code failed;
  const fs::path resolved = fs::canonical(path, failed);
  return (failed ? path : resolved).string();
}

bool isForOthers(std::int64_t number) {
  return number >= DataDirWatcher::firstNumber && number <= DataDirWatcher::lastNumber;
}

// A note, or what an engine makes of one where two have met: "003.md~", "003.md.orig".
bool isMarkdown(const std::string& name) {
  return loweredAscii(name).find(".md") != std::string::npos && !EngineNames::isTemporary(name);
}

}  // namespace

DataDirWatcher::DataDirWatcher(const StoreContext& storage, FileEvents& events, Timers& timers,
                               Observer observer)
    : root_(storage.paths.rootURL),
      files_(storage.files),
      events_(events),
      observer_(std::move(observer)),
      timers_(timers, queue_),
      known_(presentRoot()),
      own_(storage) {}

DataDirWatcher::~DataDirWatcher() {
  stop();
}

void DataDirWatcher::start() {
  queue_.async([this] {
    if (!std::exchange(isStarted_, true)) (void)tellOf(startStream());
  });
}

void DataDirWatcher::stop() {
  queue_.sync([this] {
    isStarted_ = false;
    look_.reset();
    fire_.reset();
    quiet_.reset();
    changed_.clear();
    isAnyNote_ = isUnsettled_ = false;
    stream_.reset();
  });
}

void DataDirWatcher::rememberRoot() {
  queue_.sync([this] {
    if (!known_) known_ = presentRoot();
  });
}

std::optional<FolderIdentity> DataDirWatcher::startStream() {
  stream_.reset();
  canonicalRoot_ = canonicalText(root_);
  if (!canonicalRoot_.ends_with('/')) canonicalRoot_ += '/';
  std::optional<FolderIdentity> found;
  try {
    stream_ = events_.watch(
        {.root = root_,
         .isWatched = [](const std::string& name) { return Day::parse(name).has_value(); },
         .queue = queue_,
         .onBatch = [this](const FileEventBatch& batch) { enqueue(batch); },
         .onRootTouched = [this] { look(); }});
    found = watched_ = stream_->root();
    hasFailed_ = false;
    if (found) Log::information(LogChannel::storage, "数据目录监听已启动：外部写入将实时刷新");
  } catch (const std::exception& error) {
    if (!std::exchange(hasFailed_, true))
      Log::error(LogChannel::storage, "⚠️ DataDirWatcher.startStream: {}", error.what());
    found = presentRoot();
  }
  scheduleLook();
  return found;
}

// What happened in between was told by no stream.
void DataDirWatcher::startAgain() {
  if (tellOf(startStream()) != Root::asBefore) return;
  isAnyNote_ = true;
  notify();
  awaitQuiet();
}

// Mounts, and moves far above the root, are told by nobody; a stream that failed or is short of
// watches is tried again with it.
void DataDirWatcher::scheduleLook() {
  look_ = timers_.after(retryInterval, [this] {
    if (!isStarted_) return;
    if (!stream_) return startAgain();
    stream_->retry();
    scheduleLook();
    look();
  });
}

void DataDirWatcher::look() {
  if (!isStarted_) return;
  if (!stream_ || stream_->root() != watched_ || presentRoot() != watched_) startAgain();
}

std::optional<FolderIdentity> DataDirWatcher::presentRoot() const {
  try {
    const auto root = files_.attributes(root_);
    if (root && root->type == FileType::directory)
      return FolderIdentity{root->device, root->fileNumber};
  } catch (const FileError&) {
    // What can't be looked at is no root that could be watched.
  }
  return std::nullopt;
}

DataDirWatcher::Root DataDirWatcher::tellOf(const std::optional<FolderIdentity>& found) {
  if (!found) {
    if (!std::exchange(isMissing_, true)) observer_.onRootMissing();
    return Root::missing;
  }
  // Another disk's folder may have the identity of one that went.
  const bool wasMissing = std::exchange(isMissing_, false);
  const auto before = std::exchange(known_, found);
  if (!before || (before == found && !wasMissing)) return Root::asBefore;
  observer_.onRootReplaced();
  return Root::replaced;
}

void DataDirWatcher::enqueue(const FileEventBatch& batch) {
  isAnyNote_ = isAnyNote_ || batch.isIncomplete;
  for (const fs::path& file : batch.changed)
    if (isMarkdown(file.filename().string()) && isInDay(file)) changed_.insert(file);
  if (isAnyNote_ || !changed_.empty()) notify();
  if (fire_ || isUnsettled_) awaitQuiet();
}

// A link may lead elsewhere.
bool DataDirWatcher::isInDay(const fs::path& file) const {
  return Day::parse(file.parent_path().filename().string()) &&
         canonicalText(file).starts_with(canonicalRoot_);
}

bool DataDirWatcher::isThere(const fs::path& file) const {
  try {
    return files_.exists(file);
  } catch (const FileError&) {
    return false;
  }
}

// Of what has changed: whether notes of others have. Own files are looked at only now, since the
// write of one may be told before it has come to its end.
bool DataDirWatcher::takeForeign() {
  bool hasNotes = std::exchange(isAnyNote_, false);
  isUnsettled_ = isUnsettled_ || hasNotes;
  for (const fs::path& file : std::exchange(changed_, {})) {
    const auto number = DiskPaths::seqNumber(file.filename().string());
    const bool isNote = number && *number >= 1;
    const bool isForeign = isNote ? !own_.isAsLeft(file) : isThere(file);
    isUnsettled_ = isUnsettled_ || isForeign;
    hasNotes = hasNotes || (isNote && (isForeign || isForOthers(*number)));
  }
  return hasNotes;
}

// Later events don't put it off.
void DataDirWatcher::notify() {
  if (fire_) return;
  fire_ = timers_.after(debounce, [this] {
    if (!fire_) return;  // stopped meanwhile
    fire_.reset();
    if (takeForeign()) observer_.onExternalWrite();
  });
}

// Later events do.
void DataDirWatcher::awaitQuiet() {
  quiet_ = timers_.after(quietInterval, [this] {
    if (!quiet_) return;
    quiet_.reset();
    if (std::exchange(isUnsettled_, false)) observer_.onQuiet();
  });
}

}  // namespace nomely
