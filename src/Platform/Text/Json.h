#pragma once

#include <nlohmann/json.hpp>

namespace nomely {

// JSON whose objects keep the order in which their members came.
using Json = nlohmann::ordered_json;

}  // namespace nomely

// Compiled in one place: half of what a file that uses it would cost.
extern template class nlohmann::basic_json<nlohmann::ordered_map>;
