#pragma once

#include "Core/Models/Memo.h"

namespace nomely {

// A note's header is given what today's form has and an older one, or another program's, lacks: an
// identity, times, a source, a version. Nobody changed the note by that: whoever still holds its
// state from before may go on. Pure.
namespace MemoUpgrade {

// Whether there is anything left to fill in.
[[nodiscard]] bool isDue(const Memo& memo);
// Whether `current` is `before` but for what an upgrade has filled in.
[[nodiscard]] bool isOf(const Memo& current, const Memo& before);
// Gives `changed`, which was made of that state, what `current` has more.
void carryInto(Memo& changed, const Memo& current);

}  // namespace MemoUpgrade

}  // namespace nomely
