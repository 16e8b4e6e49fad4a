#include "Desktop/Sound/SoundShapes.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <utility>

#include "Desktop/Base/Qt.h"
#include "Platform/Audio/MediaFile.h"

namespace nomely {
namespace {

constexpr std::size_t parts = 160;
// Half an hour of speech; to decode more for a picture of it would take seconds.
constexpr std::uintmax_t largestDrawn = 16'000'000;

SoundShapes::Shape shapeOf(const std::filesystem::path& file, const std::stop_token& stop) {
  std::error_code ignored;
  if (std::filesystem::file_size(file, ignored) > largestDrawn)
    return {.seconds = MediaFile::duration(file, stop)};
  const MediaFile::Shape told = MediaFile::shape(file, parts, stop);
  SoundShapes::Shape shape{.seconds = told.seconds, .peaks = told.peaks};
  const auto loudest = std::ranges::max_element(shape.peaks);
  if (loudest == shape.peaks.end() || *loudest <= 0) return shape;
  const double scale = *loudest;
  for (double& peak : shape.peaks) peak /= scale;
  return shape;
}

}  // namespace

void SoundShapes::ask(const QString& path, std::function<void(const Shape&)> then) {
  if (const auto known = shapes_.find(path); known != shapes_.end()) return then(known->second);
  work_.run([file = utf8(path)](const std::stop_token& stop) { return shapeOf(file, stop); },
            [this, path, then = std::move(then)](Shape shape) {
              if (shapes_.size() >= mostKept) shapes_.clear();
              then(shapes_.insert_or_assign(path, std::move(shape)).first->second);
            });
}

}  // namespace nomely
