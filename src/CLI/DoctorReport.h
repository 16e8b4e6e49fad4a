#pragma once

#include <filesystem>
#include <string>

#include "CLI/KeepingReport.h"
#include "CLI/Session.h"
#include "CLI/SyncReport.h"
#include "Core/Lifecycle/RootInspector.h"
#include "Feishu/Messages/FeishuInbox.h"

namespace nomely {

// What `doctor` found.
struct DoctorReport {
  RootInspector::Report found;
  std::filesystem::path root;
  std::vector<std::filesystem::path> drafts;  // files with texts that an editor left behind
  struct Bot {
    bool isOpenToAll = false;  // it is on, and nobody has been paired
    FeishuInbox::Counts inbox;
    [[nodiscard]] bool isFine() const {
      return !isOpenToAll && inbox.waiting == 0 && inbox.aside == 0;
    }
  };
  Bot bot = {};
  KeepingReport keeping = {};
  SyncReport sync = {};

  [[nodiscard]] Json json() const;
  [[nodiscard]] std::string text(const Style& style) const;
};

}  // namespace nomely
