#include "Core/Models/AudioTranscript.h"

#include "Platform/Text/Unicode.h"

namespace nomely {

bool AudioTranscript::isEmpty() const {
  return trimSpaceAndBreaks(text).empty() || segments.empty();
}

}  // namespace nomely
