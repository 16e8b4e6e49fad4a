#include "Core/Lifecycle/Settling/RootSettling.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "Core/Lifecycle/Settling/ConfigSettling.h"
#include "Core/Lifecycle/Settling/ConflictNames.h"
#include "Core/Lifecycle/Settling/DraftSettling.h"
#include "Core/Lifecycle/Settling/HistorySettling.h"
#include "Core/Lifecycle/Settling/MemoSettling.h"
#include "Core/Lifecycle/Settling/MetaSettling.h"
#include "Core/Lifecycle/Settling/ReturnedAttachments.h"
#include "Core/Lifecycle/Settling/TrashSettling.h"
#include "Core/Lifecycle/Settling/VanishedNotes.h"
#include "Core/Storage/MaintenanceWork.h"
#include "Core/Storage/SyncedFolder.h"
#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

// What fails is logged, and the next step follows.
template <typename Step>
void attempt(Step step) {
  try {
    step();
  } catch (const Error&) {
    MaintenanceWork::logOrRethrow("⚠️ RootSettling.run");
  }
}

template <typename Things, typename Step>
void each(const Things& things, const std::stop_token& stop, Step step) {
  for (const auto& thing : things) {
    throwIfStopped(stop);
    attempt([&] { step(thing); });
  }
}

}  // namespace

RootSettling::RootSettling(const MemoService& service, MemoCensus census)
    : service_(service), context_(service.context()), census_(std::move(census)) {}

SettlingResult RootSettling::run(const std::stop_token& stop,
                                 const std::vector<std::filesystem::path>& histories) const {
  SettlingResult result;
  if (!context_.files.exists(context_.paths.rootURL)) return result;
  const Names names = namesInDays();
  // Without an engine and without anything that one has left, nothing has to be read.
  if (SyncedFolder(context_).isSynced() || !names.areNone())
    attempt([&] { settleNotes(names, result, stop); });
  else
    settleTrash(nullptr, result, stop);
  each(histories, stop, [&](const std::filesystem::path& folder) {
    HistorySettling(context_, result).settle(folder);
  });
  settleOtherFiles(result, stop);
  for (const SettlingResult::Told& told : result.told)
    Log::information(LogChannel::storage, "合并另一台电脑的改动：{}：{}", told.path.string(),
                     told.outcome);
  return result;
}

RootSettling::Names RootSettling::namesInDays() const {
  Names names;
  each(service_.days().dayFolders(), {}, [&](Day day) {
    const auto entries = context_.files.listVisible(context_.paths.dayFolder(day));
    for (const DirectoryEntry& entry : entries) {
      if (entry.type != FileType::regular) continue;
      const std::string base = ConflictNames::attachmentCopied(entry.name);
      if (ConflictNames::isStrayNote(entry.name))
        names.strays[day].push_back(entry.name);
      else if (!base.empty() &&
               std::ranges::binary_search(entries, base, {}, &DirectoryEntry::name))
        names.attachments.push_back({day, entry.name, base});
    }
  });
  return names;
}

void RootSettling::settleNotes(const Names& names, SettlingResult& result,
                               const std::stop_token& stop) const {
  StandingNotes notes(service_.days(), census_, stop);
  MemoSettling memos(service_, notes, result);
  each(notes.suspects(), stop, [&](const MemoPlace& place) { memos.settleMarked(place); });
  each(names.strays, stop, [&](const auto& day) { memos.settleStrays(day.first, day.second); });
  const bool isSynced = SyncedFolder(context_).isSynced();
  // Elsewhere somebody copied a note by hand.
  if (isSynced)
    each(notes.shared(), stop, [&](const std::string& memoId) { memos.settleShared(memoId); });
  each(names.attachments, stop, [&](const Names::Attachment& attachment) {
    memos.settleAttachment(attachment.day, attachment.name, attachment.base);
  });
  settleTrash(&notes, result, stop);
  ReturnedAttachments returned(service_, result);
  each(notes.lacking(), stop, [&](const MemoPlace& place) { returned.settle(place); });
  if (!isSynced) return;
  const VanishedNotes vanished(service_, notes, result);
  each(service_.versions().identities(""), stop,
       [&](const std::string& memoId) { vanished.settle(memoId); });
}

void RootSettling::settleTrash(const StandingNotes* notes, SettlingResult& result,
                               const std::stop_token& stop) const {
  TrashSettling trash(service_, result);
  const auto settle = [&](const std::string& entry) {
    trash.settleCopies(entry);
    if (notes) trash.settleStanding(entry, *notes);
  };
  attempt([&] { each(trash.entries(), stop, settle); });
}

void RootSettling::settleOtherFiles(SettlingResult& result, const std::stop_token& stop) const {
  const auto settle = [&](auto&& files) {
    attempt(
        [&] { each(files.found(), stop, [&](const SecondForm& form) { files.settle(form); }); });
  };
  settle(ConfigSettling(context_, result));
  settle(MetaSettling(context_, result));
  settle(DraftSettling(service_, result));
}

std::vector<std::filesystem::path> RootSettling::histories() const {
  std::vector<std::filesystem::path> found;
  const std::filesystem::path all = context_.paths.versionsByIdFolder();
  if (!context_.files.isDirectory(all)) return found;
  const auto look = [&](const std::filesystem::path& folder) {
    if (context_.files.isDirectory(folder) &&
        HistorySettling::concerns(context_.files.listVisible(folder)))
      found.push_back(folder);
  };
  each(context_.files.listVisible(all), {}, [&](const DirectoryEntry& entry) {
    look(all / entry.name);
    look(all / entry.name / "attachments");
  });
  return found;
}

std::vector<Stray> RootSettling::strays() const {
  std::vector<Stray> strays;
  if (!context_.files.exists(context_.paths.rootURL)) return strays;
  const Names names = namesInDays();
  if (SyncedFolder(context_).isSynced() || !names.areNone())
    attempt([&] { addStraysOfDays(names, strays); });
  SettlingResult unused;
  const TrashSettling trash(service_, unused);
  each(trash.entries(), {}, [&](const std::string& entry) { trash.addStrays(entry, strays); });
  each(histories(), {}, [&](const std::filesystem::path& folder) {
    HistorySettling(context_, unused).addStrays(folder, strays);
  });
  attempt([&] { ConfigSettling(context_, unused).addStrays(strays); });
  attempt([&] { MetaSettling(context_, unused).addStrays(strays); });
  attempt([&] { DraftSettling(service_, unused).addStrays(strays); });
  return strays;
}

void RootSettling::addStraysOfDays(const Names& names, std::vector<Stray>& strays) const {
  SettlingResult unused;
  StandingNotes notes(service_.days(), census_, {});
  const MemoSettling memos(service_, notes, unused);
  const auto add = [&](Day day, const std::string& name, const std::string& fault) {
    strays.push_back({std::filesystem::path(day.string()) / name,
                      fault.empty() ? SettlingResult::willBeSettled : fault, fault.empty()});
  };
  const auto addPlace = [&](const MemoPlace& place, const std::string& fault) {
    add(place.day, DiskPaths::memoFileName(place.seqNumber), fault);
  };
  for (const auto& [day, files] : names.strays)
    for (const std::string& name : files) add(day, name, memos.faultOf(day, name));
  each(notes.suspects(), {}, [&](const MemoPlace& place) {
    if (const auto fault = memos.faultOfMarked(place)) addPlace(place, *fault);
  });
  each(notes.shared(), {}, [&](const std::string& memoId) {
    bool canBeSettled = false;
    for (const MemoPlace& place : memos.placesOf(memoId, canBeSettled))
      addPlace(place, canBeSettled ? "" : "同一条笔记有几份，内容一样，分不清该留哪一份");
  });
  each(names.attachments, {}, [&](const Names::Attachment& attachment) {
    add(attachment.day, attachment.name,
        memos.faultOfAttachment(attachment.day, attachment.name, attachment.base));
  });
}

}  // namespace nomely
