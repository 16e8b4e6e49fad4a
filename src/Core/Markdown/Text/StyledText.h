#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nomely {

// Parts from 0 to 1.
struct TextColor {
  double red = 0;
  double green = 0;
  double blue = 0;
  double opacity = 1;

  // "#RRGGBB"; absent for anything else.
  [[nodiscard]] static std::optional<TextColor> fromHex(std::string_view hex);
  // A text that is equal for equal colours and different for different ones.
  [[nodiscard]] std::string description() const;

  friend bool operator==(const TextColor&, const TextColor&) = default;
};

enum class FontWeight { regular, bold };
enum class FontSlant { upright, italic };

// What a stretch of text is. How a link, code and a hit of a search look is for the one who draws
// to choose; the colours here are those that the memo's writer and the view gave.
struct TextStyle {
  FontWeight weight = FontWeight::regular;
  FontSlant slant = FontSlant::upright;
  bool isStruck = false;
  bool isCode = false;
  bool isHit = false;  // what a search looked for
  std::optional<double> pointSize;
  std::optional<TextColor> foreground;
  std::shared_ptr<const std::string> link;  // one address for all the stretches of one link

  friend bool operator==(const TextStyle& a, const TextStyle& b);
};

// Text with runs of one style each. Known to no toolkit: a window, a terminal and a page each draw
// it their own way.
struct StyledText {
  struct Run {
    std::size_t length = 0;  // bytes, more than none
    TextStyle style;

    friend bool operator==(const Run&, const Run&) = default;
  };

  std::string text;
  std::vector<Run> runs;  // of the whole text; no two neighbours look the same

  void append(std::string_view more, const TextStyle& style);
  void append(const StyledText& more);
  // Changes the style of every run.
  template <typename Change>
  void restyle(Change change);

  friend bool operator==(const StyledText&, const StyledText&) = default;
};

template <typename Change>
void StyledText::restyle(Change change) {
  std::vector<Run> before;
  before.swap(runs);
  runs.reserve(before.size());
  for (Run& run : before) {
    change(run.style);
    if (!runs.empty() && runs.back().style == run.style)
      runs.back().length += run.length;
    else
      runs.push_back(std::move(run));
  }
}

}  // namespace nomely
