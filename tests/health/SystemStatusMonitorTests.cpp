#include "quorvane/health/SystemStatusMonitor.h"

#include "tests/health/ManualDispatcher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

namespace quorvane {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;

/// A monitor of samples that are 1, 2, 3, ... percent busy, and answered when the test says so.
class SystemStatusMonitorTests : public testing::Test {
 protected:
  void sample(std::function<void(SystemStatusSnapshot)> sampled) {
    waiting_ = std::move(sampled);
    if (answersAtOnce_) answer();
  }
  void answer() {
    SystemStatusSnapshot snapshot;
    snapshot.cpuPercent = ++taken_;
    snapshot.memoryUsedBytes = 50;
    snapshot.memoryTotalBytes = 100;
    snapshot.networkDownloadBytesPerSecond = 10;
    snapshot.networkUploadBytesPerSecond = 5;
    if (taken_ == 1) snapshot.notMeasured = {SystemStatusInput::network};
    waiting_(std::move(snapshot));
  }
  double shown() const { return monitor_->snapshot().cpuPercent; }

  ManualDispatcher mainThread_;
  std::function<void(SystemStatusSnapshot)> waiting_;
  bool answersAtOnce_ = true;
  int taken_ = 0;
  int published_ = 0;
  std::optional<SystemStatusMonitor> monitor_{std::in_place,
                                              mainThread_,
                                              [this](auto sampled) { sample(std::move(sampled)); },
                                              SystemStatusSnapshot{},
                                              SystemStatusMonitor::Options{milliseconds(2000), milliseconds(250), 3},
                                              [this] { ++published_; }};
};

TEST_F(SystemStatusMonitorTests, samplesAtOnceAndThenEveryInterval) {
  mainThread_.pass(milliseconds(5000));
  EXPECT_EQ(taken_, 0) << "not before it is started";
  monitor_->start();
  monitor_->start();
  mainThread_.pass(milliseconds(249));
  EXPECT_EQ(shown(), 1);
  mainThread_.pass(milliseconds(1));
  EXPECT_EQ(shown(), 2) << "soon, for the rates";
  mainThread_.pass(milliseconds(1999));
  EXPECT_EQ(shown(), 2);
  mainThread_.pass(milliseconds(2001));
  EXPECT_EQ(shown(), 4);
  EXPECT_EQ(published_, 4);
}

TEST_F(SystemStatusMonitorTests, takesNoExtraSampleForTheRatesWhereNoneIsWanted) {
  monitor_->start();
  mainThread_.pass(milliseconds(100));
  monitor_->pause();
  mainThread_.pass(milliseconds(1000));
  EXPECT_EQ(taken_, 1) << "paused";
  monitor_->resume();
  mainThread_.pass(milliseconds(1999));
  EXPECT_EQ(taken_, 2) << "taken already";

  int taken = 0;
  SystemStatusMonitor fast(
      mainThread_, [&](const auto& sampled) { sampled({.cpuPercent = static_cast<double>(++taken)}); }, {},
      {.refreshInterval = milliseconds(100)}, [] {});
  fast.start();
  mainThread_.pass(milliseconds(300));
  EXPECT_EQ(taken, 4) << "an interval that is shorter is kept";
}

TEST_F(SystemStatusMonitorTests, keepsTheNewestOfItsHistories) {
  monitor_->start();
  mainThread_.pass(milliseconds(250));
  EXPECT_THAT(monitor_->cpuHistory(), ElementsAre(1, 2));
  EXPECT_THAT(monitor_->networkHistory(), ElementsAre(15)) << "the first sample has not measured it";
  mainThread_.pass(milliseconds(6000));
  EXPECT_THAT(monitor_->cpuHistory(), ElementsAre(3, 4, 5));
  EXPECT_THAT(monitor_->memoryHistory(), ElementsAre(50, 50, 50));
  EXPECT_THAT(monitor_->networkHistory(), ElementsAre(15, 15, 15));
}

TEST_F(SystemStatusMonitorTests, takesOneSampleAtATime) {
  answersAtOnce_ = false;
  monitor_->start();
  EXPECT_TRUE(monitor_->isRefreshing());
  waiting_ = [inner = waiting_](SystemStatusSnapshot snapshot) { inner(std::move(snapshot)); };
  monitor_->refreshNow();
  mainThread_.pass(milliseconds(10'000));
  EXPECT_EQ(published_, 0);
  answer();
  mainThread_.pass(milliseconds(0));
  EXPECT_FALSE(monitor_->isRefreshing());
  EXPECT_EQ(published_, 1);
}

TEST_F(SystemStatusMonitorTests, pausesAndGoesOn) {
  monitor_->start();
  mainThread_.pass(milliseconds(1000));
  monitor_->pause();
  EXPECT_TRUE(monitor_->isPaused());
  mainThread_.pass(milliseconds(10'000));
  EXPECT_EQ(shown(), 2);
  monitor_->refreshNow();
  mainThread_.pass(milliseconds(10'000));
  EXPECT_EQ(shown(), 3) << "one sample that was asked for, and no more";
  monitor_->resume();
  monitor_->resume();
  mainThread_.pass(milliseconds(1999));
  EXPECT_EQ(shown(), 4);
  mainThread_.pass(milliseconds(1));
  EXPECT_EQ(shown(), 5);
}

TEST_F(SystemStatusMonitorTests, aSampleThatWasAskedForPutsTheNextOneOff) {
  monitor_->start();
  mainThread_.pass(milliseconds(1500));
  monitor_->refreshNow();
  mainThread_.pass(milliseconds(1999));
  EXPECT_EQ(taken_, 3);
  mainThread_.pass(milliseconds(1));
  EXPECT_EQ(taken_, 4);
}

TEST_F(SystemStatusMonitorTests, stoppedOrGoneItIsToldNothingMore) {
  answersAtOnce_ = false;
  monitor_->start();
  monitor_->stop();
  answer();
  mainThread_.pass(milliseconds(10'000));
  EXPECT_EQ(published_, 0);
  EXPECT_FALSE(monitor_->isRefreshing());

  monitor_->start();
  const auto late = waiting_;
  monitor_.reset();
  late(SystemStatusSnapshot{});
  mainThread_.pass(milliseconds(10'000));
  EXPECT_EQ(published_, 0);
}

}  // namespace
}  // namespace quorvane
