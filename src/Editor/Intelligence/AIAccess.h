#pragma once

#include <functional>

#include "AI/Vendor/AIConfig.h"
#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/Network/HttpClient.h"
#include "Platform/Time/Clock.h"

namespace nomely {

// What the AI actions of a user interface need. What is referred to must outlive them.
struct AIAccess {
  // The settings of the moment. Called on the thread that asks the model; what it throws is shown
  // as the action's failure.
  std::function<AIConfig()> config;
  HttpClient& http;
  MainExecutor& executor;
  const Clock& clock;
};

}  // namespace nomely
