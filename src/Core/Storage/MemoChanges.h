#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>

#include "Core/Models/Memo.h"
#include "Platform/Concurrency/SerialQueue.h"
#include "Platform/Concurrency/Subscription.h"
#include "Platform/Time/Day.h"

namespace nomely {

// Notifications of changes to the memo files of one root: the stores that write them announce, and
// observers that keep a copy of their contents are called.
class MemoChanges {
 public:
  // Called in the gate, on the writer's thread, in the order of the writes: be quick, don't throw.
  struct Observer {
    // A file was written or moved into its place; the memo is as it reads from there.
    std::function<void(const Memo&, Day)> written;
    std::function<void(Day, std::int64_t seqNumber)> removed;
    // Any file may have changed.
    std::function<void()> manyChanged;
  };

  // While it lives, holds back the announcements of its thread; when it ends, they are made as a
  // single `manyChanged`.
  class Bulk {
   public:
    explicit Bulk(MemoChanges& changes);
    ~Bulk();
    Bulk(const Bulk&) = delete;
    Bulk& operator=(const Bulk&) = delete;

   private:
    friend class MemoChanges;
    MemoChanges& changes_;
    Bulk* outer_;
  };

  // `gate` is the queue on which every write of the root runs.
  explicit MemoChanges(SerialQueue& gate) : gate_(gate) {}

  // This call and the end of the subscription both wait for a write that is under way, so that no
  // observer is called after its subscription has ended. Safe on any thread.
  [[nodiscard]] Subscription observe(Observer observer);

  // Inside a write of the gate.
  void announceWritten(const Memo& memo, Day day);
  void announceRemoved(Day day, std::int64_t seqNumber);
  void announceManyChanged();

 private:
  [[nodiscard]] bool isHeldBack() const;
  template <typename Tell>
  void tell(Tell tell);
  template <typename Body>
  void inGate(Body body);

  static thread_local Bulk* innermost_;

  SerialQueue& gate_;
  // Touched on the gate's queue only.
  std::map<std::uint64_t, std::shared_ptr<const Observer>> observers_;
  std::uint64_t nextKey_ = 0;
};

}  // namespace nomely
