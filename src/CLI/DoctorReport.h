#pragma once

#include <filesystem>
#include <string>

#include "CLI/Session.h"
#include "Core/Lifecycle/RootInspector.h"

namespace nomely {

// What `doctor` found.
struct DoctorReport {
  RootInspector::Report found;
  std::filesystem::path root;
  std::vector<std::filesystem::path> drafts;  // files with texts that an editor left behind

  [[nodiscard]] Json json() const;
  [[nodiscard]] std::string text(const Style& style) const;
};

}  // namespace nomely
