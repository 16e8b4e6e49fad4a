#pragma once

#include <QString>
#include <string>
#include <vector>

#include "Core/Models/Memo.h"

namespace nomely::EditedMemo {

// A memo's text as an area shows it.
[[nodiscard]] QString shownText(const std::string& body);

// Those of `all` that `kept` lacks.
[[nodiscard]] std::vector<std::string> without(const std::vector<std::string>& all,
                                               const std::vector<std::string>& kept);

// Whether two states of a memo say the same: what a person wrote and added, but neither its pin nor
// what the program keeps about it.
[[nodiscard]] bool saySame(const Memo& left, const Memo& right);

}  // namespace nomely::EditedMemo
