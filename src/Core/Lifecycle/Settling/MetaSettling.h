#pragma once

#include <string>
#include <vector>

#include "Core/Lifecycle/Settling/SecondForms.h"
#include "Core/Lifecycle/Settling/SettlingResult.h"
#include "Core/Storage/StoreContext.h"

namespace nomely {

// Settles second forms of the files in `.meta`: of the bot's log the latest messages of both sides
// stay; a message of the inbox that waits in another form, too, is put aside there; what is known
// of the root says the same on every machine. Throws FileError.
class MetaSettling {
 public:
  // Both must outlive it.
  MetaSettling(const StoreContext& context, SettlingResult& result)
      : context_(context), result_(result) {}

  [[nodiscard]] std::vector<SecondForm> found() const;
  // One write of the gate. What isn't there any more is nothing.
  void settle(const SecondForm& form);

  void addStrays(std::vector<Stray>& strays) const {
    SecondForms::addStrays(context_, found(), strays);
  }

 private:
  void settleMarker(const SecondForm& form);
  void settleLog(const SecondForm& form);
  void settleInbox(const SecondForm& form);
  [[nodiscard]] std::filesystem::path inbox() const;
  [[nodiscard]] bool areOneMessage(const SecondForm& form) const;

  const StoreContext& context_;
  SettlingResult& result_;
};

}  // namespace nomely
