#pragma once

#include <filesystem>
#include <string>

#include "CLI/Session.h"
#include "Core/Lifecycle/RootInspector.h"

namespace nomely {

// What an inspection found, as `doctor` prints it.
namespace DoctorReport {

[[nodiscard]] Json json(const RootInspector::Report& report, const std::filesystem::path& root);
[[nodiscard]] std::string text(const RootInspector::Report& report,
                               const std::filesystem::path& root, const Style& style);

}  // namespace DoctorReport

}  // namespace nomely
