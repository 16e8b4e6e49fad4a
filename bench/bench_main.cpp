#include <string>
#include <vector>

#include "bench/Comparison.h"

using namespace nomely::bench;

// Exits with 1 when a goal is missed. Takes the benchmark library's own options.
int main(int argc, char** argv) {
  // What the caller gives comes later and wins.
  std::vector<std::string> words{argv[0], "--benchmark_min_time=1"};
  words.insert(words.end(), argv + 1, argv + argc);
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  int count = static_cast<int>(arguments.size());
  arguments.push_back(nullptr);
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;

  registerParsing();
  registerWriting();
  registerProcesses();
  registerText();
  registerSearching();
  registerColdReading();
  registerMarkdown();
  registerPages();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return printTable() ? 0 : 1;
}
