#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "Platform/Concurrency/Subscription.h"

namespace nomely {

// Process-wide notices between parts that don't know each other. Safe on any thread.
class NotificationCenter {
 public:
  // The text that goes with a notice; empty when it says all by its name.
  using Observer = std::function<void(const std::string& payload)>;

  [[nodiscard]] static NotificationCenter& shared();

  // Observers run on the posting thread before this returns; none of this class's locks is held.
  // Returns whether there was one.
  bool post(std::string_view name, const std::string& payload = {});
  // A call already under way may still end after the subscription did.
  [[nodiscard]] Subscription observe(std::string_view name, Observer observer);

 private:
  using Observers = std::multimap<std::string, std::shared_ptr<Observer>, std::less<>>;

  std::mutex mutex_;
  Observers observers_;
};

// The notices in use.
namespace Notifications {
inline constexpr std::string_view dataMaintenance = "NomelyDataMaintenance";
// Another program wrote notes, or took some away. Posted on the main executor.
inline constexpr std::string_view externalMemoWritten = "externalMemoWritten";
// Asks whoever plays a recording to stop: what is on the screen is about to change.
inline constexpr std::string_view stopAudioPlayback = "stopNomelyAudioPlayback";
// Tags came or went by other ways than an edit.
inline constexpr std::string_view refreshSidebarTags = "refreshSidebarTags";
// The writing of a summary has ended, whichever way.
inline constexpr std::string_view monthlySummaryCompleted = "monthlySummaryCompleted";
// The conversation log has another entry, or none any more.
inline constexpr std::string_view feishuLogChanged = "feishuLogChanged";
// A memo's file was kept as another program wrote it; the payload is the memo's identity.
inline constexpr std::string_view originalKept = "NomelyOriginalKept";
// A list goes on without a memo whose file can't be read; the payload is "<path>：<reason>".
inline constexpr std::string_view memoPassedOver = "NomelyMemoPassedOver";
// Notes that another computer wrote stand in the diary now, or in a history; the payload tells the
// user so. Posted on the main executor.
inline constexpr std::string_view notesSettled = "NomelyNotesSettled";
}  // namespace Notifications

}  // namespace nomely
