// A memo file of any bytes is refused with a typed error or gives a memo that survives writing.

#include "Support/RoundTrip.h"
#include "fuzz/Fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace nomely;
  fuzz::require(test::readingOf(fuzz::textOf(data, size)) != test::Reading::changed);
  return 0;
}
