#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "CLI/Session.h"
#include "CLI/Syntax.h"
#include "Core/Query/RootScan.h"

namespace nomely {

// The options that choose memos, for `list`, `search` and `export`. Several hold together.
class MemoSelection {
 public:
  // What is chosen when nothing is asked for.
  enum class Default { today, everything };

  explicit MemoSelection(Default chosen) : default_(chosen) {}
  // The options write into it.
  MemoSelection(const MemoSelection&) = delete;
  MemoSelection& operator=(const MemoSelection&) = delete;

  void declare(Syntax& syntax);

  // Throws UsageError.
  [[nodiscard]] MemoFilter filter(const Session& session) const;
  [[nodiscard]] RootScan::Order order() const;
  [[nodiscard]] std::optional<std::size_t> limit() const;

  // Calls `visit` with the chosen memos in the order of their list. Returns whether the limit cut
  // that. Throws UsageError before the first, CancellationError when stopped.
  [[nodiscard]] bool forEach(Session& session, const std::stop_token& stop,
                             const std::function<void(const MemoEntry&)>& visit) const;
  // "只列出了 50 条……" on standard error.
  static void tellOfMore(const Session& session, std::size_t limit);
  // The day of which every memo is chosen; absent when more or less is asked for.
  [[nodiscard]] std::optional<Day> wholeDay(const Session& session) const;

 private:
  // The one day of the chosen memos; absent when they may be of several.
  [[nodiscard]] std::optional<Day> day(const Session& session) const;
  // Whether something besides "all" and a number is asked for.
  [[nodiscard]] bool hasConditions() const;

  Default default_;
  std::optional<std::string> day_;
  std::optional<std::string> from_;
  std::optional<std::string> to_;
  std::optional<std::string> onThisDay_;  // empty: today
  std::vector<std::string> tags_;
  std::optional<std::int64_t> limit_;
  bool all_ = false;
  bool untagged_ = false;
  bool images_ = false;
  bool links_ = false;
  bool audio_ = false;
  bool files_ = false;
  bool pinned_ = false;
  bool reverse_ = false;
};

}  // namespace nomely
