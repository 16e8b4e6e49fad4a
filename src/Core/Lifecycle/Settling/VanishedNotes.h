#pragma once

#include <string>

#include "Core/Lifecycle/Settling/SettlingResult.h"
#include "Core/Lifecycle/Settling/StandingNotes.h"
#include "Core/Service/MemoService.h"

namespace nomely {

// Puts notes back that two machines have each taken from another place: of a note that stood twice
// with the same text, one took the one away, the other the other, because what they go by had not
// come to both. They are known by StateKeeping's snapshots. For a root that is synchronised.
class VanishedNotes {
 public:
  // All that is referred to must outlive it.
  VanishedNotes(const MemoService& service, const StandingNotes& notes, SettlingResult& result)
      : service_(service), context_(service.context()), notes_(notes), result_(result) {}

  // One write of the gate. Nothing happens to a note that stands or lies in the trash, to one that
  // settling never took away, and where its history came here within a day. Throws what reading and
  // writing memo files throws.
  void settle(const std::string& memoId) const;

 private:
  // The newest of its texts that settling took away.
  [[nodiscard]] std::optional<VersionEntry> lastRemoved(const std::string& memoId) const;

  const MemoService& service_;
  const StoreContext& context_;
  const StandingNotes& notes_;
  SettlingResult& result_;
};

}  // namespace nomely
