#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Core/Storage/ConfigStore.h"
#include "Core/Storage/TagConfig.h"
#include "Platform/Concurrency/Observable.h"

namespace nomely {

// The colours and emojis of tags. A change is saved at once; one that can't be saved stays in
// memory, is not told of here, and is saved together with the next. Lives on the main executor.
class TagConfigStore {
 public:
  // Loads.
  explicit TagConfigStore(ConfigStore configStore);

  [[nodiscard]] const Published<TagConfigStore, TagConfig>& config() const { return config_; }
  // Whether all changes are on the disk.
  [[nodiscard]] bool isSaved() const { return unsaved_.empty(); }

  // Reads the file; what is missing or invalid has its defaults.
  void load();
  // The same for what a background job has read or saved through a ConfigStore.
  void adopt(TagConfig stored);

  void setColor(const std::string& color, const std::string& tag);
  void removeColor(const std::string& tag);
  void setEmoji(const std::string& emoji, const std::string& tag);
  void removeEmoji(const std::string& tag);
  // See TagConfig.
  void move(const std::string& from, const std::string& to);

 private:
  using Change = std::function<void(TagConfig&)>;
  void change(Change change);

  ConfigStore configStore_;
  Published<TagConfigStore, TagConfig> config_;
  std::vector<Change> unsaved_;
};

}  // namespace nomely
