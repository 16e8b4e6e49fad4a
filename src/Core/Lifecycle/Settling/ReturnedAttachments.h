#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include "Core/Lifecycle/Settling/SettlingResult.h"
#include "Core/Service/MemoService.h"

namespace nomely {

// Brings back files that notes name and their days lack: one machine took them off a note, moved it
// or threw it away, while another one went on writing it. They are found where the first machine
// put them, and stay there too.
class ReturnedAttachments {
 public:
  // All that is referred to must outlive it.
  ReturnedAttachments(const MemoService& service, SettlingResult& result)
      : service_(service), context_(service.context()), result_(result) {}

  // One write of the gate. Nothing happens where the note lacks nothing, and on a day that changed
  // here a short time ago: then it may be the note's own end that is on its way. Throws what
  // reading a memo throws, and FileError.
  void settle(const MemoPlace& place);

 private:
  [[nodiscard]] std::optional<std::filesystem::path> find(const std::string& name);
  // What lies in histories, in the trash and in days, by name.
  [[nodiscard]] std::map<std::string, std::filesystem::path> keptFiles() const;

  const MemoService& service_;
  const StoreContext& context_;
  SettlingResult& result_;
  std::optional<std::map<std::string, std::filesystem::path>> kept_;  // as of the first need
};

}  // namespace nomely
