#include "Core/Storage/TagConfigStore.h"

#include "Platform/System/Log.h"

namespace nomely {

TagConfigStore::TagConfigStore(ConfigStore configStore) : configStore_(std::move(configStore)) {
  load();
}

void TagConfigStore::load() {
  TagConfig config;
  try {
    config = configStore_.load<TagConfig>(TagConfig::fileName).value_or(config);
  } catch (const Error&) {
    // A fault in the file shows tags without colours and stops nothing.
  }
  adopt(std::move(config));
}

void TagConfigStore::adopt(TagConfig config) {
  for (const Change& change : unsaved_) change(config);
  config_.set(std::move(config));
}

void TagConfigStore::setColor(const std::string& color, const std::string& tag) {
  change([=](TagConfig& config) { config.colors[tag] = color; });
}
void TagConfigStore::removeColor(const std::string& tag) {
  change([=](TagConfig& config) { config.colors.erase(tag); });
}
void TagConfigStore::setEmoji(const std::string& emoji, const std::string& tag) {
  change([=](TagConfig& config) { config.emojis[tag] = emoji; });
}
void TagConfigStore::removeEmoji(const std::string& tag) {
  change([=](TagConfig& config) { config.emojis.erase(tag); });
}

void TagConfigStore::move(const std::string& from, const std::string& to) {
  change([=](TagConfig& config) { config.move(from, to); });
}

void TagConfigStore::change(Change change) {
  unsaved_.push_back(std::move(change));
  try {
    config_.set(configStore_.change(TagConfig::fileName, config_.get(), [&](TagConfig& config) {
      for (const Change& each : unsaved_) each(config);
    }));
    unsaved_.clear();
  } catch (const Error& error) {
    Log::information(LogChannel::storage, "TagConfigStore: {}", error.what());
    config_.modify([&](TagConfig& config) { unsaved_.back()(config); });
  }
}

}  // namespace nomely
