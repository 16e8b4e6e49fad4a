#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Lifecycle/Settling/SecondForms.h"
#include "Core/Lifecycle/Settling/SettlingResult.h"
#include "Core/Service/MemoService.h"
#include "Core/Storage/Drafts.h"

namespace nomely {

// Settles second forms of drafts: what somebody typed on another machine and hadn't saved when this
// one had a draft, too. The draft in place stays, since a window may be open over it, and would
// write over any other. The other text becomes a note of its own, or, where it is one's that
// exists, a version in its history. Throws what reading and writing memo files throws.
class DraftSettling {
 public:
  // What notes are tagged with that were drafts.
  static constexpr const char* tag = "草稿";

  // Both must outlive it.
  DraftSettling(const MemoService& service, SettlingResult& result)
      : service_(service), context_(service.context()), result_(result) {}

  [[nodiscard]] std::vector<SecondForm> found() const;
  // One write of the gate. What isn't there any more is nothing.
  void settle(const SecondForm& form);

  void addStrays(std::vector<Stray>& strays) const {
    SecondForms::addStrays(context_, found(), strays);
  }

 private:
  // These say what became of the draft in `bytes`; absent when it is none that can be read.
  [[nodiscard]] std::optional<std::string> takeQuickInput(const std::string& bytes,
                                                          const std::string& present);
  [[nodiscard]] std::optional<std::string> takeFocus(const std::string& bytes,
                                                     const std::string& present,
                                                     const std::filesystem::path& base);
  [[nodiscard]] std::string keepAsVersion(const Memo& memo, const FocusMemoDraft& draft,
                                          const std::optional<MemoPlace>& place);
  // A note made of a draft with those bytes, unless it has been made.
  [[nodiscard]] std::string keepAsNote(Day day, DayStore::NewMemo content,
                                       const std::string& bytes);
  // Brings the files that the draft names to that day. Names of files that are on this machine
  // nowhere go, unless they may still arrive in that day.
  void bringFiles(Day day, DayStore::NewMemo& content,
                  const std::map<std::string, Day>& dates) const;

  const MemoService& service_;
  const StoreContext& context_;
  SettlingResult& result_;
};

}  // namespace nomely
