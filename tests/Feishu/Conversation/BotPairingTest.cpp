#include <gtest/gtest.h>

#include "Feishu/Conversation/BotPairing.h"
#include "Platform/Text/Json.h"
#include "Support/FaultyFileSystem.h"
#include "Support/ManualClock.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

class BotPairingTest : public testing::Test {
 protected:
  static std::string wrongFor(std::string code) {
    code.back() = code.back() == '0' ? '1' : '0';
    return code;
  }

  TemporaryFolder folder;
  ManualClock clock;
  const FileManager files{posixFileSystem()};
  // Two processes.
  const BotPairing asking{folder.path() / "state", files, clock};
  const BotPairing hearing{folder.path() / "state", files, clock};
};

TEST_F(BotPairingTest, ACodeHoldsUntilItHasDoneItsWork) {
  EXPECT_FALSE(hearing.isWaiting());
  EXPECT_FALSE(hearing.matches("123456"));
  const std::string first = asking.begin();
  const std::string code = asking.begin();
  EXPECT_EQ(hearing.matches(first), first == code);
  for (const std::string& noGuess :
       {code + "0", code.substr(1), " " + code, std::string("12345a"), std::string("１２")})
    for (int i = 0; i < 5; ++i) EXPECT_FALSE(hearing.matches(noGuess));
  for (int i = 0; i < 9; ++i) EXPECT_TRUE(hearing.matches(code));
  hearing.end();
  EXPECT_FALSE(hearing.matches(code));
  EXPECT_FALSE(asking.isWaiting());
  // Leading zeros stay: of 200 codes, some have one.
  bool isZeroFirst = false;
  for (int i = 0; i < 200; ++i) isZeroFirst |= asking.begin().starts_with('0');
  EXPECT_TRUE(isZeroFirst && hearing.isWaiting());
  for (const char* damaged : {"", "[]", "{}", R"({"code":"000000","end":7,"guesses":0})",
                              R"({"code":"000000","end":"2026-03-01T01:35:05Z","guesses":-1})"}) {
    writeFile(folder.path() / "state/pairing/code.json", damaged);
    EXPECT_FALSE(hearing.matches("000000")) << damaged;
  }
}

TEST_F(BotPairingTest, TimeAndWrongGuessesEndIt) {
  std::string code = asking.begin();
  clock.advance(std::chrono::minutes(10) - std::chrono::seconds(1));
  EXPECT_TRUE(hearing.matches(code));
  clock.advance(std::chrono::seconds(1));
  EXPECT_FALSE(hearing.matches(code));
  code = asking.begin();
  clock.advance(-std::chrono::hours(1));
  EXPECT_FALSE(hearing.isWaiting());

  code = asking.begin();
  for (int guess = 1; guess <= 5; ++guess) {
    EXPECT_TRUE(hearing.matches(code)) << guess;
    // It starts anew with each guess.
    EXPECT_FALSE(BotPairing(folder.path() / "state", files, clock).matches(wrongFor(code)));
  }
  EXPECT_FALSE(hearing.matches(code));
  EXPECT_FALSE(hearing.isWaiting());
}

// Whatever fails: where the right code would have been accepted, a wrong one is counted, or no code
// is accepted any more.
TEST_F(BotPairingTest, AGuessThatCanNotBeCountedEndsItHere) {
  const auto file = folder.path() / "state/pairing/code.json";
  for (std::uint64_t call = 1;; ++call) {
    const std::string code = asking.begin();
    EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms(0600));
    FaultyFileSystem forRight(posixFileSystem(), {.atCall = call});
    FaultyFileSystem forWrong(posixFileSystem(), {.atCall = call});
    const bool isRight =
        BotPairing(folder.path() / "state", FileManager(forRight), clock).matches(code);
    const BotPairing struck(folder.path() / "state", FileManager(forWrong), clock);
    EXPECT_FALSE(struck.matches(wrongFor(code)));
    if (forWrong.calls() < call) break;
    const int counted = Json::parse(readFile(file)).at("guesses");
    EXPECT_TRUE(!isRight || counted == 1 || !struck.matches(code)) << call;
  }
}

}  // namespace
}  // namespace nomely::test
