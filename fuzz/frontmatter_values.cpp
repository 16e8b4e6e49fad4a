// Any values survive writing, and nothing in them ends the header early.

#include "Support/RandomFrontmatter.h"
#include "Support/RoundTrip.h"
#include "fuzz/Fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace nomely;
  fuzz::Bytes bytes(data, size);
  const MemoFrontmatter memo = test::drawFrontmatter(bytes);
  fuzz::require(test::survivesWriting(memo, test::drawText(bytes)));
  return 0;
}
