#pragma once

#include "Platform/Concurrency/JobPool.h"
#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/Concurrency/Timers.h"
#include "Platform/Files/FileSystem.h"
#include "Platform/Time/Clock.h"

namespace nomely {

class Application;
class Navigation;

// What a screen works with. All of it outlives every screen.
struct ScreenContext {
  Application& application;
  Navigation& navigation;
  MainExecutor& executor;
  JobPool& jobs;
  const Clock& clock;
  Timers& timers;
  FileSystem& fileSystem;
};

}  // namespace nomely
