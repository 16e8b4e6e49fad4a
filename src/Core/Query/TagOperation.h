#pragma once

#include <cstdint>
#include <string>

#include "Core/Query/TagManagementStore.h"

namespace nomely {

// A change of a tag in all memos as a user asks for it, with what is to be said of it. A value.
struct TagOperation {
  enum class Kind : std::uint8_t { rename, merge, remove, removeWithMemos };

  Kind kind = Kind::rename;
  std::string tag;
  std::string other = {};  // of a rename or merge: what `tag` becomes

  [[nodiscard]] bool hasOther() const { return kind == Kind::rename || kind == Kind::merge; }
  // Whether a backup has to be made first.
  [[nodiscard]] bool isRisky() const { return kind == Kind::removeWithMemos; }

  // Blocking; see TagManagementStore.
  TagChange run(const TagManagementStore& store, const TagRun& run) const;

  // What it would do, before it is asked for, and what it did. `planned` is of a dry run.
  [[nodiscard]] std::string question(const TagChange& planned) const;
  [[nodiscard]] std::string outcome(const TagChange& done) const;
  // What was not done; empty when all was.
  [[nodiscard]] static std::string shortfall(const TagChange& done);
  // Of bringing back what was moved to the trash.
  [[nodiscard]] static std::string restored(const TagChange& done);
  static constexpr const char* restoreStopped = "已恢复的笔记回到原处，其余的还在回收站里。";
  // Of one that was stopped halfway.
  static constexpr const char* stopped = "已改的笔记保持改后的样子；再执行一次就能改完其余的。";
};

}  // namespace nomely
