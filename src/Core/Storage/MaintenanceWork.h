#pragma once

#include <string_view>

#include "Core/Storage/StoreContext.h"
#include "Platform/Error.h"

namespace nomely {

// What passes over a whole root share. Bulk work logs what fails and goes on, but not when
// the next thing would fail in the same way.
namespace MaintenanceWork {

// Whether it has been asked to stop, or the root is frozen for a restore, read-only or without
// room.
[[nodiscard]] bool concernsWholeRoot(const Error& error);

// To be called in a handler of exceptions derived from Error: throws one that concerns the whole
// root again, else logs `what` and its text.
void logOrRethrow(std::string_view what);

// Throws FileError when nothing can be written to an existing root. Through the gate.
void requireWritable(const StoreContext& context);

}  // namespace MaintenanceWork

}  // namespace nomely
