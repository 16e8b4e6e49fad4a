#pragma once

#include <QTimer>
#include <functional>

#include "Platform/Concurrency/Lifetime.h"
#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/Concurrency/Subscription.h"

namespace nomely {

class Application;

// Tells that notes or their tags were changed, by this program or another one, so that whoever
// counts them does so anew: once for what comes within a fifth of a second. Main executor.
class DiaryChanges {
 public:
  // Both must outlive this.
  DiaryChanges(Application& application, MainExecutor& executor, std::function<void()> changed);
  ~DiaryChanges();
  DiaryChanges(const DiaryChanges&) = delete;
  DiaryChanges& operator=(const DiaryChanges&) = delete;

 private:
  QTimer timer_;
  Lifetime lifetime_;
  Subscription memos_;
  Subscription tags_;
  Subscription external_;
};

}  // namespace nomely
