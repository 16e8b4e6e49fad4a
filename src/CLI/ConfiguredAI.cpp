#include "CLI/ConfiguredAI.h"

#include "AI/Vendor/AIError.h"

namespace nomely {

AIConfig configuredAI(Session& session) {
  AIConfig config = session.settings().ai();
  if (!config.apiKey.empty()) return config;
  session.say("密钥用 nomely secret set ai 填写，厂商用 nomely config set ai.provider 选择。");
  throw AIError(AIError::Kind::notConfigured);
}

}  // namespace nomely
