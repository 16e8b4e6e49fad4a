#pragma once

#include <cstdlib>
#include <memory>
#include <string>

#include "AI/Vendor/AIConfig.h"
#include "Platform/Network/HttpClient.h"
#include "Platform/Text/Json.h"
#include "Support/LoopbackServer.h"
#include "Support/Matchers.h"
#include "Support/TemporaryFolder.h"
#include "Support/TestPaths.h"

namespace nomely::test {

// A language model's vendor on this machine, in both dialects.
class LanguageVendor : public LoopbackServer {
 public:
  static constexpr const char* claudePath = "/v1/messages";
  static constexpr const char* openAIPath = "/v1/chat/completions";

  // Settings that lead here.
  [[nodiscard]] AIConfig config(AIConfig::Provider provider = AIConfig::Provider::custom) const {
    AIConfig config;
    config.provider = provider;
    config.model = "model-1";
    config.apiKey = "sk-planted";
    config.baseURL = url();
    return config;
  }

  [[nodiscard]] static std::string reply(const std::string& text,
                                         const std::string& finish = "stop") {
    return Json{{"choices", {{{"message", {{"content", text}}}, {"finish_reason", finish}}}}}
        .dump();
  }
  // From here on, every question gets that reply.
  void replies(const std::string& text, const std::string& finish = "stop") {
    answer(openAIPath, {.body = reply(text, finish)});
  }

  const std::unique_ptr<HttpClient> http = makeHttpClient();
};

// Compares a whole request with the file of that name in fixtures/requests, which
// NOMELY_REBASELINE=1 writes anew.
inline void expectGolden(const std::string& name, const LoopbackServer::Request& request) {
  std::string text = request.method + " " + request.target + "\n";
  for (const auto& [header, value] : request.headers)
    if (header != "host" && header != "content-length") text += header + ": " + value + "\n";
  text += "\n" + request.body + "\n";
  const std::string file = TestPaths::fixtures + "/requests/" + name + ".txt";
  if (std::getenv("NOMELY_REBASELINE") != nullptr) writeFile(file, text);
  EXPECT_EQ(text, readFile(file)) << name;
}

}  // namespace nomely::test
