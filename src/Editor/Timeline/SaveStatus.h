#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "Platform/Concurrency/Observable.h"
#include "Platform/Time/Clock.h"

namespace nomely {

// How the latest write stands.
struct SaveState {
  enum class Kind { saved, failed, idle, saving };

  Kind kind = Kind::idle;
  Moment at{};          // of `saved`
  std::string message;  // of `failed`

  [[nodiscard]] static SaveState saved(Moment at) { return {Kind::saved, at, {}}; }
  [[nodiscard]] static SaveState failed(std::string message) {
    return {Kind::failed, {}, std::move(message)};
  }
  [[nodiscard]] static SaveState saving() { return {Kind::saving, {}, {}}; }

  friend bool operator==(const SaveState&, const SaveState&) = default;
};

// What the user is told of writes. Main executor alone.
class SaveStatus {
 public:
  explicit SaveStatus(const Clock& clock) : clock_(clock) {}

  Published<SaveStatus, SaveState> saveState;
  Observable<std::optional<std::string>> lastError;
  std::function<void()> onSavedSuccessfully;

  void begin() { saveState.set(SaveState::saving()); }
  void callBack() const {
    if (onSavedSuccessfully) onSavedSuccessfully();
  }
  void succeed() { saveState.set(SaveState::saved(clock_.now())); }
  // For a failure that the caller reports by itself.
  void failSilently(std::string message) { saveState.set(SaveState::failed(std::move(message))); }
  void fail(const std::string& message) {
    failSilently(message);
    lastError.set(message);
  }

 private:
  const Clock& clock_;
};

}  // namespace nomely
