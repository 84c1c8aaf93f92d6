#include "quorvane/scan/ScanPauseControl.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace quorvane {
namespace {

/// Threads that wait at the suspension point, and what it told them.
class Waiters {
 public:
  Waiters(ScanPauseControl& control, int count) {
    for (int i = 0; i < count; ++i)
      threads_.emplace_back([&] { ++(control.waitWhilePaused() ? continued_ : stopped_); });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  void join() { threads_.clear(); }
  int continued() const { return continued_; }
  int stopped() const { return stopped_; }

 private:
  std::atomic<int> continued_ = 0, stopped_ = 0;
  std::vector<std::jthread> threads_;
};

TEST(ScanPauseControlTests, wakesEveryWaiterOnResume) {
  ScanPauseControl control;
  EXPECT_TRUE(control.waitWhilePaused()) << "it runs";
  control.pause();
  Waiters waiters(control, 3);
  EXPECT_EQ(waiters.continued() + waiters.stopped(), 0);
  control.resume();
  waiters.join();
  EXPECT_EQ(waiters.continued(), 3);
}

TEST(ScanPauseControlTests, wakesEveryWaiterOnCancel) {
  ScanPauseControl control;
  control.pause();
  Waiters waiters(control, 3);
  EXPECT_FALSE(control.stopToken().stopRequested());
  control.cancel();
  waiters.join();
  EXPECT_EQ(waiters.stopped(), 3);
  EXPECT_TRUE(control.stopToken().stopRequested());
  control.pause();
  EXPECT_FALSE(control.waitWhilePaused());
  control.resume();
  EXPECT_EQ(control.state(), ScanPauseControl::State::cancelled);
}

}  // namespace
}  // namespace quorvane
