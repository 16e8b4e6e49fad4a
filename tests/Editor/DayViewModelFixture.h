#pragma once

#include <chrono>
#include <future>
#include <latch>
#include <memory>
#include <string>
#include <vector>

#include "Editor/Timeline/DayViewModel.h"
#include "Platform/Concurrency/RunLoop.h"
#include "Support/PausingFileSystem.h"
#include "Support/StoreFixture.h"

namespace nomely::test {

// A model over real stores, with the run loop as the main executor. `store` is somebody else's on
// the same root: what it writes, the model and its index don't know.
class DayViewModelTest : public StoreTest {
 protected:
  DayViewModelTest() { renew(); }

  void renew() {
    model = std::make_unique<DayViewModel>(DayViewModel::Context{
        .service = service, .searchIndex = &index, .executor = loop, .jobs = jobs});
  }

  Memo add(Day date, const std::string& body, std::vector<std::string> tags = {}) {
    const Memo memo = store.createMemo(date, {.body = body, .tags = std::move(tags)});
    index.indexMemo(memo, date);
    return memo;
  }

  // Runs the loop until `done`.
  template <typename Done>
  [[nodiscard]] testing::AssertionResult comesTrue(Done done) {
    if (loop.runUntil(done, std::chrono::seconds(20))) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "not within 20 s";
  }
  [[nodiscard]] testing::AssertionResult isLoaded() {
    return comesTrue([this] { return !model->isLoadingTimeline.get(); });
  }
  [[nodiscard]] testing::AssertionResult isSettled() {
    return comesTrue([this] {
      return model->saveState.get() != SaveState::saving() && !model->isLoadingTimeline.get();
    });
  }

  void loadToday() {
    model->loadDay(today);
    ASSERT_TRUE(isLoaded());
  }

  // Waits, without running the loop, until each of the pool's threads has ended what it was at.
  void endJobs() {
    const auto together = std::make_shared<std::latch>(threads);
    for (std::ptrdiff_t i = 0; i < threads; ++i)
      jobs.submit([together](const std::stop_token&) { together->arrive_and_wait(); });
    together->wait();
  }
  // The same, and runs what they posted.
  void drain() {
    endJobs();
    bool isDrained = false;
    loop.post([&] { isDrained = true; });
    EXPECT_TRUE(comesTrue([&] { return isDrained; }));
  }

  [[nodiscard]] std::vector<std::string> shown() const {
    return bodiesOf(model->displayMemos.get());
  }
  [[nodiscard]] std::vector<std::string> ofTheDay() const {
    std::vector<std::string> bodies;
    for (const Memo& memo : model->memos.get()) bodies.push_back(memo.body);
    return bodies;
  }
  [[nodiscard]] std::string failure() const { return model->saveState.get().message; }
  [[nodiscard]] bool isSaved() const {
    return model->saveState.get() == SaveState::saved(clock.now());
  }
  // The list's own copy, as a card hands it to an editor.
  [[nodiscard]] Memo listed(const std::string& body) const {
    for (const MemoEntry& entry : model->allMemos.get())
      if (entry.memo->body == body) return *entry.memo;
    ADD_FAILURE() << "no memo with the text " << body;
    return {};
  }

  // The same with another text, as the editor hands it back.
  [[nodiscard]] Memo edited(const std::string& body, const std::string& text) const {
    Memo memo = listed(body);
    memo.body = text;
    return memo;
  }

  [[nodiscard]] Memo onDisk(Day date, std::int64_t number) const {
    return store.memoStore().read(date, number).value();
  }

  // Holds the next listing of a day's folder until `release`.
  struct Hold {
    Hold(DayViewModelTest& test, Day date) : test_(test) {
      test.files.at(PausingFileSystem::Call::list, test.context.paths.dayFolder(date), [this] {
        test_.loop.post([this] { isHeld_ = true; });
        release_.get_future().wait();
      });
    }
    [[nodiscard]] testing::AssertionResult begins() {
      return test_.comesTrue([this] { return isHeld_; });
    }
    void release() { release_.set_value(); }

   private:
    DayViewModelTest& test_;
    std::promise<void> release_;
    bool isHeld_ = false;
  };

  PausingFileSystem files{posixFileSystem()};
  RunLoop loop;
  static constexpr std::ptrdiff_t threads = 3;
  JobPool jobs{threads};
  MemoService service{{context.paths, FileManager(files), clock}};
  SearchIndex index{service.context(), jobs};
  std::unique_ptr<DayViewModel> model;
  Day today = clock.today();
  Day yesterday = today.plusDays(-1);
};

}  // namespace nomely::test
