#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "Editor/Diagrams/DiagramPicture.h"

namespace nomely {

// The markup of diagrams that were drawn, by source: drawing one again is only a matter of showing
// it. One that was put in longest ago goes first. Safe on any thread.
class MermaidRenderCache {
 public:
  static constexpr std::size_t limit = 24;

  // The one of this process for diagrams of that look: colours stand in the markup.
  [[nodiscard]] static MermaidRenderCache& shared(DiagramLook look);

  [[nodiscard]] std::optional<std::string> svg(std::string_view code) const;
  void store(std::string svg, std::string_view code);

 private:
  mutable std::mutex mutex_;
  std::map<std::string, std::string, std::less<>> storage_;
  std::deque<std::string> insertionOrder_;
};

}  // namespace nomely
