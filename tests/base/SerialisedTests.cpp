#include "quorvane/base/Serialised.h"

#include "quorvane/base/StopToken.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

namespace quorvane {
namespace {

/// Not made for threads: the thread sanitizer sees two operations that run at once.
struct Recorder {
  std::vector<std::pair<int, int>>& seen;
};

TEST(SerialisedTests, runsEverythingHandedOverBeforeItEnds) {
  constexpr int threads = 4, each = 500;
  std::vector<std::pair<int, int>> seen;
  {
    Serialised<Recorder> service(seen);
    std::vector<std::jthread> callers;
    for (int caller = 0; caller < threads; ++caller)
      callers.emplace_back([&service, caller] {
        for (int number = 0; number < each; ++number)
          service.perform([caller, number](Recorder& recorder) { recorder.seen.emplace_back(caller, number); });
      });
  }
  ASSERT_EQ(seen.size(), static_cast<std::size_t>(threads * each));
  std::vector<int> next(threads, 0);
  for (const auto& [caller, number] : seen) EXPECT_EQ(number, next[static_cast<std::size_t>(caller)]++);
}

TEST(SerialisedTests, returnsAtOnceAndWaitsAtItsEnd) {
  std::promise<void> release;
  std::atomic<bool> finished = false;
  std::vector<std::pair<int, int>> seen;
  auto service = std::make_unique<Serialised<Recorder>>(seen);
  service->perform([&](Recorder&) {
    release.get_future().wait();
    finished = true;
  });
  EXPECT_FALSE(finished);
  std::jthread releaser([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    release.set_value();
  });
  service.reset();
  EXPECT_TRUE(finished);
}

TEST(SerialisedTests, takesOperationsFromAnOperation) {
  std::vector<std::pair<int, int>> seen;
  {
    Serialised<Recorder> service(seen);
    std::promise<void> queued;
    service.perform([&](Recorder& first) {
      service.perform([](Recorder& second) { second.seen.emplace_back(2, 0); });
      first.seen.emplace_back(1, 0);
      queued.set_value();
    });
    queued.get_future().wait();
  }
  EXPECT_EQ(seen, (std::vector<std::pair<int, int>>{{1, 0}, {2, 0}}));
}

TEST(StopTokenTests, reachesEveryCopyOnAnyThread) {
  StopSource source;
  const StopToken token = source.token();
  EXPECT_FALSE(token.stopRequested());
  std::jthread waiter([copy = token] {
    while (!copy.stopRequested()) std::this_thread::yield();
  });
  source.requestStop();
  EXPECT_FALSE(StopToken().stopRequested());
}

}  // namespace
}  // namespace quorvane
