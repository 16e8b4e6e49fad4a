#pragma once

#include <mutex>
#include <string>

#include "Platform/Error.h"

namespace nomely {

// A shared library that is loaded when the first of its functions is asked for, and then stays:
// linked in, it would cost every start of the program, and most runs need none. Safe on any thread.
//
//   const LazyLibrary library("libcurl.so.4");
//   auto* const init = library.function<decltype(curl_easy_init)>("curl_easy_init");
class LazyLibrary {
 public:
  // The library, or a function of it, isn't there.
  class MissingError : public Error {
   public:
    explicit MissingError(const std::string& name);
  };

  explicit LazyLibrary(std::string fileName) : fileName_(std::move(fileName)) {}
  LazyLibrary(const LazyLibrary&) = delete;
  LazyLibrary& operator=(const LazyLibrary&) = delete;

  // Throws MissingError.
  template <typename Function>
  [[nodiscard]] Function* function(const char* name) const {
    return reinterpret_cast<Function*>(symbol(name));
  }

 private:
  [[nodiscard]] void* symbol(const char* name) const;

  std::string fileName_;
  mutable std::mutex mutex_;
  mutable void* handle_ = nullptr;
};

}  // namespace nomely
