#include "quorvane/scan/ProgressDelivery.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <deque>
#include <limits>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace quorvane {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds interval{100};
const Uuid first{.bytes = {1}}, second{.bytes = {2}};

/// Runs what is due when the test lets time pass.
class ManualDispatcher final : public Dispatcher {
 public:
  void postAfter(milliseconds delay, std::function<void()> function) override {
    pending_.push_back({now_ + delay, std::move(function)});
  }

  void advance(milliseconds time) {
    now_ += time;
    const auto isDue = [this](const Task& task) { return task.due <= now_; };
    for (auto due = pending_.begin(); (due = std::ranges::find_if(pending_, isDue)) != pending_.end();) {
      const auto function = std::move(due->function);
      pending_.erase(due);
      function();
    }
  }

  std::size_t pendingCount() const { return pending_.size(); }

 private:
  struct Task {
    milliseconds due;
    std::function<void()> function;
  };
  milliseconds now_{0};
  std::deque<Task> pending_;
};

class ScanProgressDeliveryTests : public testing::Test {
 protected:
  void submit(std::vector<double> fractions, Uuid operation = first) {
    for (const double fraction : fractions) delivery_->submit(operation, fraction);
  }

  /// Lets all time pass that could bring something.
  void drain() {
    while (dispatcher_.pendingCount() > 0) dispatcher_.advance(interval);
  }

  ManualDispatcher dispatcher_;
  std::vector<double> delivered_;
  std::shared_ptr<ScanProgressDelivery> delivery_ =
      ScanProgressDelivery::make(dispatcher_, interval, [this](double fraction) { delivered_.push_back(fraction); });
};

TEST_F(ScanProgressDeliveryTests, acceptsOnlyFractionsThatGoForward) {
  struct Case {
    std::vector<double> submitted, delivered;
  };
  constexpr double infinity = std::numeric_limits<double>::infinity();
  constexpr double noNumber = std::numeric_limits<double>::quiet_NaN();
  for (const auto& [submitted, expected] : std::vector<Case>{
           {{0.4, 0.3, 0.5}, {0.4, 0.5}},
           {{1.7}, {1.0}},
           {{-0.5}, {0.0}},
           {{0.2, noNumber, infinity, -infinity}, {0.2}},
           {{0.2, 0.2}, {0.2, 0.2}},
           {{1.7, 1.2, 0.9}, {1.0, 1.0}},
       }) {
    delivered_.clear();
    delivery_->begin(first);
    delivery_->begin(second);
    for (const double fraction : submitted) {
      delivery_->submit(second, fraction);
      dispatcher_.advance(interval);
    }
    drain();
    EXPECT_EQ(delivered_, expected) << testing::PrintToString(submitted);
  }
}

TEST_F(ScanProgressDeliveryTests, deliversTheFirstAtOnceAndTheNewestAfterTheInterval) {
  delivery_->begin(first);
  submit({0.1});
  dispatcher_.advance(milliseconds(0));
  EXPECT_EQ(delivered_, std::vector{0.1});
  submit({0.2, 0.3});
  dispatcher_.advance(interval - milliseconds(1));
  EXPECT_EQ(delivered_, std::vector{0.1});
  dispatcher_.advance(milliseconds(1));
  EXPECT_EQ(delivered_, (std::vector{0.1, 0.3}));
  drain();
  submit({0.4});
  dispatcher_.advance(milliseconds(0));
  EXPECT_EQ(delivered_, (std::vector{0.1, 0.3, 0.4})) << "after a silence the next is the first again";
}

TEST_F(ScanProgressDeliveryTests, dropsAnEarlierOperationsUpdatesAndStartsAgainFromZero) {
  submit({0.5});
  drain();
  EXPECT_TRUE(delivered_.empty()) << "of no operation";
  delivery_->begin(first);
  submit({0.9});
  delivery_->begin(second);
  submit({0.95}, first);
  submit({0.1}, second);
  drain();
  EXPECT_EQ(delivered_, std::vector{0.1});
}

TEST_F(ScanProgressDeliveryTests, keepsItsPlaceWhenTheSameOperationBeginsAgain) {
  delivery_->begin(first);
  submit({0.9});
  delivery_->begin(first);
  submit({0.1});
  drain();
  EXPECT_EQ(delivered_, std::vector{0.9});
}

TEST_F(ScanProgressDeliveryTests, hasAtMostOneTaskOnItsWay) {
  delivery_->begin(first);
  submit({0.1, 0.2});
  delivery_->begin(second);
  submit({0.1, 0.2}, second);
  EXPECT_EQ(dispatcher_.pendingCount(), 1U);
}

TEST_F(ScanProgressDeliveryTests, deliversNothingOnceReleased) {
  delivery_->begin(first);
  submit({0.1});
  delivery_.reset();
  drain();
  EXPECT_TRUE(delivered_.empty());
}

TEST(CleaningScanProgressDeliveryTests, carriesWholeReportsAndMayBeCalledFromItsHandler) {
  ManualDispatcher dispatcher;
  std::vector<CleaningScanProgressUpdate> delivered;
  std::weak_ptr<CleaningScanProgressDelivery> own;
  const CleaningScanProgressUpdate logs{0.5, "scan.status.logs", ScanActivitySnapshot{"/home/u/x", 7}};
  const CleaningScanProgressUpdate done{1.5, "scan.status.finished", {}};
  const auto delivery = CleaningScanProgressDelivery::make(dispatcher, interval, [&](const auto& update) {
    delivered.push_back(update);
    if (update.progress < 1) own.lock()->submit(first, done);
  });
  own = delivery;
  delivery->begin(first);
  delivery->submit(first, logs);
  dispatcher.advance(milliseconds(0));
  dispatcher.advance(interval);
  EXPECT_EQ(delivered, (std::vector{logs, CleaningScanProgressUpdate{1.0, "scan.status.finished", {}}}));
}

/// Runs each function on a thread of its own as soon as it can: worse than any main thread.
class ThreadDispatcher final : public Dispatcher {
 public:
  ~ThreadDispatcher() override {
    while (!taken().empty()) continue;
  }

  void postAfter(milliseconds, std::function<void()> function) override {
    const std::lock_guard lock(mutex_);
    threads_.emplace_back(std::move(function));
  }

 private:
  /// Those that were begun since the last call; they end when they are dropped, and may begin more.
  std::vector<std::jthread> taken() {
    const std::lock_guard lock(mutex_);
    return std::exchange(threads_, {});
  }

  std::mutex mutex_;
  std::vector<std::jthread> threads_;
};

TEST(ScanProgressDeliveryThreadTests, neverDeliversTwiceAtOnceNorLosesTheLastValue) {
  constexpr int steps = 20'000;
  std::atomic<int> inside = 0, overlaps = 0;
  std::atomic<double> last = 0;
  {
    ThreadDispatcher dispatcher;
    const auto delivery = ScanProgressDelivery::make(dispatcher, milliseconds(0), [&](double fraction) {
      if (++inside > 1) ++overlaps;
      last = fraction;
      std::this_thread::yield();
      --inside;
    });
    const auto hammer = [&](Uuid operation) {
      for (int step = 0; step <= steps; ++step) {
        if (step % 100 == 0) delivery->begin(operation);
        delivery->submit(operation, static_cast<double>(step) / steps);
      }
    };
    {
      const std::jthread one([&] { hammer(first); });
      const std::jthread other([&] { hammer(second); });
    }
    delivery->begin(Uuid{.bytes = {3}});
    delivery->submit(Uuid{.bytes = {3}}, 0.125);
    for (int tries = 0; last != 0.125 && tries < 5000; ++tries) std::this_thread::sleep_for(milliseconds(1));
    EXPECT_EQ(last, 0.125);
  }
  EXPECT_EQ(overlaps, 0);
}

}  // namespace
}  // namespace quorvane
