#pragma once

#include <stop_token>
#include <string>

#include "AI/Vendor/AIService.h"

namespace nomely {

// Changes a text after instructions in plain words, one request each. Made anew for each run, with
// the settings of the moment.
class AIBeautifier {
 public:
  struct Task {
    std::string original;
    std::string current;  // what earlier instructions made of it; empty: none
    std::string instruction;
  };

  AIBeautifier(const AIConfig& config, HttpClient& http) : service_(config, http) {}

  // The whole changed text. Throws as AIService::chat, and AIFeatureOffError.
  [[nodiscard]] AIService::Reply refine(const Task& task, const std::stop_token& stop);

 private:
  AIService service_;
};

}  // namespace nomely
