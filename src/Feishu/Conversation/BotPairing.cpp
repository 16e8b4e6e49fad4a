#include "Feishu/Conversation/BotPairing.h"

#include <algorithm>
#include <cstddef>
#include <random>
#include <utility>

#include <fmt/format.h>

#include "Core/Extensions/DateFormatters.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"
#include "Platform/Text/JsonReading.h"

namespace nomely {
namespace {

constexpr unsigned ownerOnly = 0600;
constexpr unsigned folderOfOwner = 0700;
constexpr std::uint64_t mostBytes = 4096;

constexpr std::size_t length = 6;

bool isCode(std::string_view text) {
  return text.size() == length &&
         std::ranges::all_of(text, [](char digit) { return digit >= '0' && digit <= '9'; });
}

std::string randomCode() {
  std::random_device system;
  return fmt::format("{:06}", std::uniform_int_distribution<int>(0, 999'999)(system));
}

// Looks at every digit, so that the time it takes tells nothing.
bool areEqual(std::string_view left, std::string_view right) {
  unsigned difference = left.size() == right.size() ? 0 : 1;
  for (std::size_t i = 0; i < std::min(left.size(), right.size()); ++i)
    difference |= static_cast<unsigned char>(left[i]) ^ static_cast<unsigned char>(right[i]);
  return difference == 0;
}

}  // namespace

// Between reading the file and writing it nobody else does.
class BotPairing::Lock {
 public:
  explicit Lock(const BotPairing& pairing) : guard_(pairing.mutex_), lock_(pairing.lock_) {
    (void)lock_.lock([] {});
  }
  ~Lock() { lock_.unlock(); }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

 private:
  std::lock_guard<std::mutex> guard_;
  DirectoryLock& lock_;
};

BotPairing::BotPairing(const std::filesystem::path& stateFolder, const FileManager& files,
                       const Clock& clock)
    : folder_(stateFolder / "pairing"),
      file_(folder_ / "code.json"),
      files_(files),
      clock_(clock),
      lock_(folder_) {}

std::string BotPairing::begin() const {
  files_.createDirectories(folder_.parent_path(), folderOfOwner);
  files_.createDirectories(folder_, folderOfOwner);
  const Lock lock(*this);
  const Code code{.digits = randomCode(), .end = clock_.now() + validity};
  files_.removeFile(file_);
  put(code);
  return code.digits;
}

bool BotPairing::isWaiting() const {
  try {
    return awaited().has_value();
  } catch (const FileError& error) {
    Log::error(LogChannel::feishu, "配对码读不出：{}", error.what());
    return false;
  }
}

bool BotPairing::hasRunOut() const {
  return files_.exists(file_) && !isWaiting();
}

bool BotPairing::matches(std::string_view text) const {
  if (!isCode(text) || !isWaiting()) return false;
  try {
    const Lock lock(*this);
    const auto code = awaited();
    if (!code || code->digits == refused_) return false;
    if (areEqual(text, code->digits)) return true;
    count(*code);
  } catch (const FileError& error) {
    Log::error(LogChannel::feishu, "配对码没能核对：{}", error.what());
  }
  return false;
}

void BotPairing::count(Code code) const {
  ++code.guesses;
  try {
    put(code);
  } catch (const FileError&) {
    refused_ = code.digits;
    throw;
  }
  if (code.guesses >= mostGuesses)
    Log::error(LogChannel::feishu, "配对码猜错 {} 次，已作废", code.guesses);
}

void BotPairing::end() const {
  if (!isWaiting()) return;
  try {
    const Lock lock(*this);
    if (const auto code = awaited()) refused_ = code->digits;
    files_.removeFile(file_);
  } catch (const FileError& error) {
    Log::error(LogChannel::feishu, "配对码没能删除：{}", error.what());
  }
}

std::optional<BotPairing::Code> BotPairing::awaited() const {
  const auto bytes = files_.read(file_, mostBytes);
  if (!bytes) return std::nullopt;
  try {
    const Json json = readJson(*bytes);
    const auto end = DateFormatters::parseUtcTimestamp(json.at("end").get<std::string>());
    const Code code{.digits = json.at("code").get<std::string>(),
                    .end = end.value_or(Moment()),
                    .guesses = json.at("guesses").get<int>()};
    const auto left = code.end - clock_.now();
    // A clock that was set back gives it no more time than it was made for.
    const bool isInTime = left > Moment::duration(0) && left <= validity;
    if (isCode(code.digits) && isInTime && code.guesses >= 0 && code.guesses < mostGuesses)
      return code;
  } catch (const JsonError&) {
  } catch (const Json::exception&) {
    // Damaged, it is no code; the library's text would quote it.
  }
  return std::nullopt;
}

void BotPairing::put(const Code& code) const {
  const Json json{{"code", code.digits},
                  {"end", DateFormatters::utcTimestamp(code.end)},
                  {"guesses", code.guesses}};
  const std::string bytes = json.dump() + '\n';
  if (!files_.createAtomically(file_, bytes, ownerOnly)) files_.writeAtomically(file_, bytes);
}

}  // namespace nomely
