#include "bench/Comparison.h"

using namespace nomely::bench;

// Exits with 1 when a goal is missed. Takes the benchmark library's own options.
int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;

  registerParsing();
  registerWriting();
  registerProcesses();
  registerText();
  registerSearching();
  registerColdReading();
  registerMarkdown();
  registerPages();
  registerMedia();
  registerImports();
  registerSummaries();
  registerFrames();
  registerBot();
  registerBackups();
  registerUpkeep();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return printTable() ? 0 : 1;
}
