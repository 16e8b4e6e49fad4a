#pragma once

#include <string>
#include <vector>

#include "Core/Lifecycle/Settling/SecondForms.h"
#include "Core/Lifecycle/Settling/SettlingResult.h"
#include "Core/Storage/StoreContext.h"

namespace nomely {

// Settles second forms of settings, and settings in which git left both sides. Tags get the looks
// that either side gave them. Of all other settings those in place stay, and those of the other
// machine lie beside them as "ai-config.yaml.other-0f8fad5b", for their owner alone: a person tells
// which are wanted. Throws FileError.
class ConfigSettling {
 public:
  // Both must outlive it.
  ConfigSettling(const StoreContext& context, SettlingResult& result)
      : context_(context), result_(result) {}

  [[nodiscard]] std::vector<SecondForm> found() const;
  // One write of the gate. What isn't there any more is nothing.
  void settle(const SecondForm& form);

  // Those that will be settled, and settings that were set aside.
  void addStrays(std::vector<Stray>& strays) const;

 private:
  void settleMarked(const std::filesystem::path& file);
  void settleCopy(const SecondForm& form);
  // The bytes that `file`, which holds `present`, is to have where another machine has `other`.
  // What these lack of either side is set aside by then.
  [[nodiscard]] std::string joined(const std::filesystem::path& file, const std::string& present,
                                   const std::string& other) const;
  void keepAside(const std::filesystem::path& file, const std::string& bytes) const;

  const StoreContext& context_;
  SettlingResult& result_;
};

}  // namespace nomely
