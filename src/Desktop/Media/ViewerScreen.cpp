#include "Desktop/Media/ViewerScreen.h"

#include <algorithm>
#include <utility>

#include "Desktop/Pictures/ThumbnailProvider.h"

namespace nomely {

ViewerScreen::ViewerScreen(MediaScreen& media) {
  pictures_.setMedia(&media);
}

QString ViewerScreen::source() const {
  const QString file = path();
  return file.isEmpty() ? QString() : ThumbnailProvider::source(file) + u"?fit=within"_qs;
}

void ViewerScreen::view(const MemoHandle& memo, int index) {
  pictures_.setMemo(memo);
  index_ = std::clamp(index, -1, count() - 1);
  emit changed();
}

void ViewerScreen::step(int pictures) {
  if (!isOpen()) return;
  const int index = std::clamp(index_ + pictures, 0, count() - 1);
  if (std::exchange(index_, index) != index) emit changed();
}

void ViewerScreen::close() {
  view({}, -1);
}

}  // namespace nomely
