#include "Core/Storage/MemoBatch.h"

#include <cerrno>
#include <limits>
#include <utility>

#include "Core/Storage/MemoFile.h"
#include "Core/Storage/MemoStamp.h"
#include "Core/Storage/StoredFileName.h"
#include "Platform/Files/FileError.h"

namespace nomely {
namespace {

void takeAway(FileSystem& fileSystem, const std::filesystem::path& name) noexcept {
  try {
    fileSystem.remove(name);
  } catch (const FileError&) {
    // A file without a memo is reported as an orphan; a folder that holds something stays.
  }
}

}  // namespace

MemoBatch::~MemoBatch() {
  files_.discard();
  for (const std::filesystem::path& folder : made_) takeAway(context_.files.fileSystem(), folder);
}

std::filesystem::path MemoBatch::prepare(Day day) {
  std::filesystem::path folder = context_.paths.dayFolder(day);
  if (prepared_.insert(day).second) {
    // Made here, where no wait for the disk follows: settling makes it durable with what is in it.
    if (context_.files.fileSystem().makeDirectory(folder, 0777))
      made_.push_back(folder);
    else
      context_.prepareFolder(folder);
  }
  return folder;
}

std::optional<std::string> MemoBatch::addFile(Day day, const FileManager::Producer& produce,
                                              const std::function<std::string()>& extension) {
  const std::filesystem::path folder = prepare(day);
  const std::size_t file = files_.add(folder, produce);
  std::optional<std::string> name = StoredFileName::fresh(extension());
  if (name) loose_.push_back({file, folder / *name});
  return name;
}

void MemoBatch::add(Day day, Memo memo) {
  stampAsNew(memo, context_.clock);
  const std::string content = MemoFile::contentOf(memo);
  const std::size_t file =
      files_.add(prepare(day), [&](const FileManager::Sink& sink) { sink(content); });
  memos_.push_back({day, std::move(memo), file, std::exchange(loose_, {})});
}

void MemoBatch::place(const Placed& placed) {
  files_.settle();
  for (Entry& entry : std::exchange(memos_, {})) {
    placeWith(entry.attachments, [&] { placeMemo(entry); });
    if (placed) placed(entry.day, entry.memo);
  }
  placeWith(std::exchange(loose_, {}), [] {});
  made_.clear();
}

// The attachments come first: a memo never names what isn't there.
void MemoBatch::placeWith(const std::vector<Attachment>& attachments,
                          const std::function<void()>& then) {
  std::size_t done = 0;
  try {
    for (; done < attachments.size(); ++done)
      if (const auto& [file, target] = attachments[done]; !files_.place(file, target))
        throw FileError("写入", target, EEXIST);
    then();
  } catch (...) {
    while (done > 0) takeAway(context_.files.fileSystem(), attachments[--done].target);
    throw;
  }
}

void MemoBatch::placeMemo(Entry& entry) {
  auto& [day, memo, file, attachments] = entry;
  try {
    for (;;) {
      const std::filesystem::path target = context_.paths.memoFile(day, memo.seqNumber);
      if (files_.place(file, target)) break;
      if (memo.seqNumber == std::numeric_limits<std::int64_t>::max())
        throw FileError("编号", target, EOVERFLOW);
      ++memo.seqNumber;
    }
  } catch (...) {
    context_.gate.changes().announceManyChanged();
    throw;
  }
  context_.gate.changes().announceWritten(memo, day);
}

void MemoBatch::settle(const StoreContext& context) {
  context.files.fileSystem().syncFileSystem(context.paths.rootURL);
}

}  // namespace nomely
