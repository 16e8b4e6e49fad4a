#pragma once

#include <optional>
#include <string>

#include "Core/Models/Memo.h"
#include "Core/Storage/VersionStore.h"

namespace nomely {

// The text of a memo file, as it is weighed against another one of the same note. A value; pure.
struct MemoText {
  std::string bytes;  // that read as `memo`
  Memo memo;          // its number says nothing
  unsigned permissions = 0600;
  std::string found;  // the file's bytes where they had to be mended to be read; else empty

  // Absent when `bytes` are no memo's and can't be mended. `fallbackTime` ("HH:mm") is for a text
  // without a header.
  [[nodiscard]] static std::optional<MemoText> read(std::string bytes, unsigned permissions,
                                                    const std::string& fallbackTime);

  // Empty for a note without one.
  [[nodiscard]] std::string id() const { return memo.memoId.value_or(""); }
  // Gives it that identity; its bytes become what we write.
  void setId(const std::string& memoId);

  // When it was written as far as it tells, else 1970.
  [[nodiscard]] Moment written() const;
  [[nodiscard]] VersionStore::ForeignState state() const { return {bytes, written(), permissions}; }

  // Whether it is the one of two texts that stays: the later one, by `updated_at`. Any two machines
  // say the same, whatever their zone.
  [[nodiscard]] bool staysBefore(const MemoText& other) const;
  // Whether its `updated_at` is later, and not merely another one.
  [[nodiscard]] bool isLaterThan(const MemoText& other) const;
  // Whether nothing of it is lost when only `other` is left.
  [[nodiscard]] bool isIn(const MemoText& other) const;
  // Whether they show the same, whatever their identities.
  [[nodiscard]] bool showsAs(const MemoText& other) const;
};

}  // namespace nomely
