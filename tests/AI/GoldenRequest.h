#pragma once

#include <cstdlib>

#include <gtest/gtest.h>

#include "Support/LoopbackServer.h"
#include "Support/TemporaryFolder.h"
#include "Support/TestPaths.h"

namespace nomely::test {

// Compares a whole request with the file of that name in fixtures/requests, which
// NOMELY_REBASELINE=1 writes anew.
inline void expectGolden(const std::string& name, const LoopbackServer::Request& request) {
  std::string text = request.method + " " + request.target + "\n";
  for (const auto& [header, value] : request.headers)
    if (header != "host" && header != "content-length") text += header + ": " + value + "\n";
  text += "\n" + request.body + "\n";
  const std::string file = TestPaths::fixtures + "/requests/" + name + ".txt";
  if (std::getenv("NOMELY_REBASELINE") != nullptr) writeFile(file, text);
  EXPECT_EQ(text, readFile(file)) << name;
}

}  // namespace nomely::test
