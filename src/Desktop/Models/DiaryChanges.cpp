#include "Desktop/Models/DiaryChanges.h"

#include <chrono>

#include "App/Application.h"
#include "Core/Storage/DataWriteCoordinator.h"
#include "Platform/Concurrency/NotificationCenter.h"

namespace nomely {

DiaryChanges::DiaryChanges(Application& application, MainExecutor& executor,
                           std::function<void()> changed) {
  timer_.setSingleShot(true);
  timer_.setInterval(std::chrono::milliseconds(200));
  timer_.callOnTimeout(std::move(changed));
  const auto begin = lifetime_.guard([this] {
    if (!timer_.isActive()) timer_.start();
  });
  // Changes are announced on the writer's thread.
  const auto post = [&executor, begin] { executor.post(begin); };
  memos_ = application.storage().gate.changes().observe(
      {.written = [post](const Memo&, Day) { post(); },
       .removed = [post](Day, std::int64_t) { post(); },
       .manyChanged = post});
  const auto observe = [&](std::string_view name) {
    return NotificationCenter::shared().observe(name, [post](const std::string&) { post(); });
  };
  tags_ = observe(Notifications::refreshSidebarTags);
  external_ = observe(Notifications::externalMemoWritten);
}

DiaryChanges::~DiaryChanges() = default;

}  // namespace nomely
