// One of several processes that change the memos of one root at random, all of them, each other's
// too. Prints a line for every change that was reported as done:
//
//   new <memoId> <token> <day> <number>
//   add <memoId> <token>
//   move <memoId>
//
// A token is a line that from then on is in the memo's body, exactly once.
#include <algorithm>
#include <array>
#include <cstdio>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <unistd.h>

#include "Core/Storage/AttachmentManager.h"
#include "Core/Storage/DayStore.h"
#include "Core/Storage/WriteError.h"

namespace nomely::test {
namespace {

// Nothing moves into or out of the last one, so that its numbers are drawn once each.
const std::array days{"2026-03-01", "2026-03-02", "2026-03-03", "2026-03-09"};

class Writer {
 public:
  Writer(const std::string& root, unsigned seed)
      : store_({{root}, FileManager(posixFileSystem()), clock_}), seed_(seed), random_(seed) {}

  void change() {
    const std::size_t dice = pick(10);
    const std::vector<Memo> memos = store_.listMemos(day_ = dayAt(pick(days.size())));
    if (dice < 4 || memos.empty()) return create();
    const Memo& memo = memos[pick(memos.size())];
    try {
      if (dice < 8)
        add(memo);
      else
        move(memo);
    } catch (const WriteError&) {
      // Another process was quicker.
    }
  }

 private:
  void create() {
    const std::string token = nextToken();
    DayStore::NewMemo content{.body = token + "\n"};
    if (pick(3) == 0)
      content.attachments.push_back(
          AttachmentStorage::save(store_.context(), token, "txt", store_.paths().dayFolder(day_))
              .value());
    const Memo memo = store_.createMemo(day_, content);
    tell(fmt::format("new {} {} {} {}", *memo.memoId, token, day_.string(), memo.seqNumber));
  }

  void add(const Memo& memo) {
    const std::string token = nextToken();
    Memo changed = memo;
    changed.body += token + "\n";
    store_.commitMemo(changed, day_, memo);
    tell(fmt::format("add {} {}", *memo.memoId, token));
  }

  void move(const Memo& memo) {
    const Day to = dayAt(pick(days.size() - 1));
    if (to == day_ || day_ == dayAt(days.size() - 1)) return;
    (void)store_.moveMemo(memo, day_, to);
    tell(fmt::format("move {}", *memo.memoId));
  }

  static Day dayAt(std::size_t index) { return Day::parse(days.at(index)).value(); }
  std::size_t pick(std::size_t count) { return random_() % count; }
  std::string nextToken() { return fmt::format("token-{}-{}", seed_, ++tokens_); }

  // Whole or not at all, even when the process is killed.
  static void tell(const std::string& line) {
    const std::string text = line + "\n";
    if (::write(STDOUT_FILENO, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
      throw std::runtime_error("nobody listens");
  }

  SystemClock clock_;
  DayStore store_;
  unsigned seed_;
  std::mt19937 random_;
  Day day_ = dayAt(0);
  int tokens_ = 0;
};

}  // namespace
}  // namespace nomely::test

// Arguments: root, seed, count of changes.
int main(int count, char** arguments) {
  try {
    if (count != 4) throw std::runtime_error("three arguments, please");
    nomely::test::Writer writer(arguments[1], static_cast<unsigned>(std::stoul(arguments[2])));
    for (unsigned long left = std::stoul(arguments[3]); left > 0; --left) writer.change();
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "writer: %s\n", error.what());
    return 1;
  }
}
