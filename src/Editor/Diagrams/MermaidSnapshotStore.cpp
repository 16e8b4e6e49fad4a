#include "Editor/Diagrams/MermaidSnapshotStore.h"

#include <algorithm>
#include <utility>

#include "Platform/Cancellation.h"
#include "Platform/System/Log.h"

namespace nomely {

void MermaidSnapshotStore::prepare(std::vector<std::string> codes, const std::stop_token& stop) {
  std::ranges::sort(codes);
  const auto repeated = std::ranges::unique(codes);
  codes.erase(repeated.begin(), repeated.end());
  for (const std::string& code : codes) {
    std::unique_lock lock(mutex_);
    if (snapshots_.contains(code)) continue;
    if (inFlight_.insert(code).second) {
      lock.unlock();
      draw(code, stop);
    } else {
      ended_.wait(lock, stop, [&] { return !inFlight_.contains(code); });
      throwIfStopped(stop);
    }
  }
}

void MermaidSnapshotStore::draw(const std::string& code, const std::stop_token& stop) {
  std::optional<DiagramPicture> picture;
  const auto end = [&] {
    const std::lock_guard lock(mutex_);
    if (picture) snapshots_.emplace(code, *std::move(picture));
    inFlight_.erase(code);
    ended_.notify_all();
  };
  try {
    picture = renderer_.render({.code = code, .look = DiagramLook::light, .scale = scale}, stop);
  } catch (const CancellationError&) {
    end();
    throw;
  } catch (const Error& error) {
    Log::information(LogChannel::app, "a diagram has no picture: {}", error.code());
  }
  end();
}

std::optional<DiagramPicture> MermaidSnapshotStore::snapshot(std::string_view code) const {
  const std::lock_guard lock(mutex_);
  const auto found = snapshots_.find(code);
  if (found == snapshots_.end()) return std::nullopt;
  return found->second;
}

}  // namespace nomely
