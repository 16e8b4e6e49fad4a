#include "Feishu/FeishuConfig.h"

namespace nomely {

ConfigFields configFields(FeishuConfig& config) {
  return {{.key = "appId", .target = &config.appId},
          {.key = "appSecret", .target = &config.appSecret, .account = "Nomely.feishuAppSecret"},
          {.key = "enabled", .target = &config.enabled},
          {.key = "allowedOpenID", .target = &config.allowedOpenID}};
}

}  // namespace nomely
