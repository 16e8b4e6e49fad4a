#pragma once

#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "Editor/Diagrams/DiagramPicture.h"

namespace nomely {

// Pictures of a text's diagrams for an export. A diagram that can't be drawn has none; no failure
// of one reaches the export. Safe on any thread.
class MermaidSnapshotStore {
 public:
  // For pages on white, at twice the size of the screen's points.
  static constexpr double scale = 2;

  explicit MermaidSnapshotStore(DiagramRenderer& renderer) : renderer_(renderer) {}

  // Draws those of `codes` that have no picture, and waits for those that another call is drawing.
  // Throws CancellationError.
  void prepare(std::vector<std::string> codes, const std::stop_token& stop = {});

  [[nodiscard]] std::optional<DiagramPicture> snapshot(std::string_view code) const;

 private:
  void draw(const std::string& code, const std::stop_token& stop);

  DiagramRenderer& renderer_;
  mutable std::mutex mutex_;
  std::condition_variable_any ended_;
  std::map<std::string, DiagramPicture, std::less<>> snapshots_;
  std::set<std::string, std::less<>> inFlight_;
};

}  // namespace nomely
