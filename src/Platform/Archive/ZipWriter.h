#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Files/FileSystem.h"

namespace nomely {

// Writes a ZIP archive from its beginning to its end into an open file: Unix modes, times in UTC
// (field 0x5455), names as raw bytes (marked as UTF-8 where they are), ZIP64 where it is needed.
// Memory grows with the number of entries, by what the directory takes. For one thread. Throws
// FileError.
class ZipWriter {
 public:
  enum class Compression { store, deflate };

  struct Item {
    std::string name;   // of a folder: ending in "/"
    unsigned mode = 0;  // as stat(2) gives it
    Moment modified;
  };

  explicit ZipWriter(File& target);
  ~ZipWriter();
  ZipWriter(const ZipWriter&) = delete;
  ZipWriter& operator=(const ZipWriter&) = delete;

  void addFolder(const Item& item);
  // What deflating doesn't make smaller is stored.
  void add(const Item& item, std::string_view contents, Compression compression);
  // The same for contents too large to be held, handed on by `produce`; `size` is their length,
  // and a producer that gives another one makes it throw ZipError (damaged). They are deflated as
  // told, smaller or not.
  using Sink = std::function<void(std::string_view piece)>;
  using Producer = std::function<void(const Sink& sink)>;
  void add(const Item& item, std::uint64_t size, const Producer& produce, Compression compression);
  // Writes the directory. Nothing may be added after it.
  void finish();

 private:
  class Output;
  struct Entry;
  void begin(const Item& item, Entry& entry);
  void record(const Item& item, const Entry& entry);

  std::unique_ptr<Output> output_;
  std::vector<std::string> directory_;  // in pieces: one text would be copied as it grows
  std::uint64_t count_ = 0;
};

}  // namespace nomely
