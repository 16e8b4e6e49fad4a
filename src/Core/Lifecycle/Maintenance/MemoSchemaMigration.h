#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "Core/Models/Memo.h"
#include "Platform/Time/Day.h"

namespace nomely {

struct MigrationContext {
  Day directoryDate;  // the day in whose folder the memo lies
};

// Brings a memo from one schema version to the next. Stateless; any thread.
class MemoSchemaMigration {
 public:
  virtual ~MemoSchemaMigration() = default;
  [[nodiscard]] virtual std::int64_t fromVersion() const = 0;
  [[nodiscard]] virtual Memo apply(Memo memo, const MigrationContext& context) const = 0;
};

// 0 → 1: gives a memo the identity, the timestamps and the source that it lacks.
class IdentityBackfillMigration : public MemoSchemaMigration {
 public:
  using IdProvider = std::function<std::string(const Memo& memo, const MigrationContext& context)>;

  explicit IdentityBackfillMigration(IdProvider idProvider) : idProvider_(std::move(idProvider)) {}

  [[nodiscard]] std::int64_t fromVersion() const override { return 0; }
  [[nodiscard]] Memo apply(Memo memo, const MigrationContext& context) const override;

  // When a memo of that day was made, as far as its time tells: "9:5" →
  // "2026-03-01T09:05:00+08:00", "早上" → midnight.
  [[nodiscard]] static std::string legacyTimestamp(Day directoryDate, const std::string& time);

 private:
  IdProvider idProvider_;
};

// 1 → 2: only the number changed.
class NoOpMigration : public MemoSchemaMigration {
 public:
  [[nodiscard]] std::int64_t fromVersion() const override { return 1; }
  [[nodiscard]] Memo apply(Memo memo, const MigrationContext&) const override { return memo; }
};

}  // namespace nomely
