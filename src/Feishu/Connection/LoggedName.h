#pragma once

#include <string_view>

#include "Feishu/Protocol/FeishuAPI.h"

namespace nomely {

// An id that came from outside as a line of the log may hold it.
[[nodiscard]] inline std::string_view loggedName(std::string_view id) {
  return FeishuAPI::isSafeName(id) ? id : "（无效）";
}

}  // namespace nomely
