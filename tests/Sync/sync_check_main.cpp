#include <iostream>
#include <string>

#include "Sync/SyncCheck.h"

// nomely-sync-check ROOT...: holds roots that an engine has made alike against what was stored, a
// line "memoId word" of standard input each; "-" is any place. Tells what is wrong; 1 when anything
// is.
int main(int count, char** arguments) {
  using namespace nomely::test;
  SyncLedger ledger;
  for (SyncLedger::State state; std::cin >> state.memoId >> state.word;) {
    if (state.memoId == "-") state.memoId.clear();
    ledger.saved.push_back(state);
  }
  const std::vector<std::filesystem::path> roots(arguments + 1, arguments + count);
  auto faults = syncFaults(roots, SyncEngine::Rules::peers, ledger);
  // Half of an entry of the trash is completed or cleared away by a start a day later.
  std::erase_if(faults, [](const std::string& fault) {
    return fault.starts_with("unreadable: .trash/") && fault.find(" 缺少 m") != std::string::npos;
  });
  for (const std::string& fault : faults) std::cout << fault << "\n";
  std::cout << ledger.saved.size() << " states, " << faults.size() << " faults\n";
  return faults.empty() ? 0 : 1;
}
