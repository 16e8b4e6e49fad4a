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

// What happens to the memo files of one root, told by whoever writes them to whoever keeps a copy
// of what is in them.
class MemoChanges {
 public:
  // Called in the gate, on the writer's thread, in the order of the writes: be quick, don't throw.
  struct Observer {
    // The memo as it reads from its file, which was written or came into its place.
    std::function<void(const Memo&, Day)> written;
    std::function<void(Day, std::int64_t seqNumber)> removed;
    // Any file may have changed.
    std::function<void()> manyChanged;
  };

  // Announces all that one thread does meanwhile as a single `manyChanged` at its end.
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

  // Both this and the end of the subscription wait for a write that is under way, so that an
  // observer is not called once its subscription has ended. Safe on any thread.
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
