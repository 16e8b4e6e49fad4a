#pragma once

#include <QString>
#include <functional>
#include <map>
#include <vector>

#include "Desktop/Base/BackgroundWork.h"
#include "Platform/Concurrency/JobPool.h"

namespace nomely {

// How long sounds are, and how loud over their time, as far as that is quickly told. Main thread.
class SoundShapes {
 public:
  struct Shape {
    double seconds = 0;
    std::vector<double> peaks = {};  // 0 to 1, beside the loudest; none of a large file
  };

  explicit SoundShapes(MainExecutor& executor) : work_(executor, jobs_) {}

  // Tells it, at once or later; a file that can't be decoded has none.
  void ask(const QString& path, std::function<void(const Shape&)> then);

 private:
  static constexpr std::size_t mostKept = 1000;

  JobPool jobs_{1};
  std::map<QString, Shape> shapes_;
  BackgroundWork work_;
};

}  // namespace nomely
