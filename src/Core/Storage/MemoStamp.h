#pragma once

#include "Core/Models/Memo.h"
#include "Platform/Time/Clock.h"

namespace nomely {

// What every memo gets when it is made: an identity, the moment of its making, the schema of today;
// its body as it will be read.
void stampAsNew(Memo& memo, const Clock& clock);

}  // namespace nomely
