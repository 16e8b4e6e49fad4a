#pragma once

#include <QImage>
#include <cstddef>
#include <list>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

namespace nomely {

// Pictures that were shown lately, up to a number of bytes. Safe on any thread.
class PictureCache {
 public:
  explicit PictureCache(std::size_t mostBytes) : mostBytes_(mostBytes) {}

  [[nodiscard]] std::optional<QImage> find(const std::string& key);
  // One that is large beside the rest is not kept.
  void insert(const std::string& key, const QImage& image);
  [[nodiscard]] std::size_t bytes() const;

 private:
  struct Entry {
    std::string key;
    QImage image;
  };
  using Entries = std::list<Entry>;  // latest first

  [[nodiscard]] static std::size_t bytesOf(const QImage& image);
  void drop(Entries::iterator entry);

  const std::size_t mostBytes_;
  mutable std::mutex mutex_;
  Entries entries_;
  std::unordered_map<std::string, Entries::iterator> byKey_;
  std::size_t bytes_ = 0;
};

}  // namespace nomely
