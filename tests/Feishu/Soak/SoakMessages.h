#pragma once

#include <random>
#include <string>
#include <vector>

#include "Feishu/Platform/FeishuPlatform.h"

namespace nomely::test {

// A message of the soak, and what has to be in the diary of it.
struct SoakMessage {
  PhoneMessage message;
  bool isRecorded = true;
  std::string bodyPart = {};
  std::vector<std::string> files = {};  // as they were sent
  bool isVoice = false;                 // its file is made anew
};

// Message number `number`: of every kind, its text and its files like no other's, and its media at
// the platform.
[[nodiscard]] SoakMessage soakMessage(std::size_t number, FeishuPlatform& platform,
                                      const std::string& sound);

}  // namespace nomely::test
