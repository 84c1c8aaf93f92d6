#include "quorvane/app/model/MainLoop.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace quorvane {
namespace {

using std::chrono::milliseconds;

TEST(MainLoopTests, runsInTheOrderOfTimesAndOfPosting) {
  MainLoop loop;
  std::string order;
  loop.postAfter(milliseconds(30), [&] {
    order += 'd';
    loop.stop();
  });
  loop.postAfter(milliseconds(10), [&] { order += 'c'; });
  loop.post([&] {
    order += 'a';
    loop.post([&] { order += 'b'; });
  });
  loop.run();
  EXPECT_EQ(order, "abcd");
}

TEST(MainLoopTests, isWokenByOtherThreads) {
  MainLoop loop;
  const auto owner = std::this_thread::get_id();
  std::thread::id ranOn;
  std::thread other([&] {
    std::this_thread::sleep_for(milliseconds(20));  // the loop sleeps by now
    loop.post([&] {
      ranOn = std::this_thread::get_id();
      loop.stop();
    });
  });
  loop.run();
  other.join();
  EXPECT_EQ(ranOn, owner);
}

TEST(MainLoopTests, takesAnInterruptBeforeWhatIsPosted) {
  MainLoop loop;
  std::string order;
  loop.setInterruptHandler([&] { order += 'i'; });
  loop.post([&] {
    order += 'a';
    loop.interrupt();
    loop.interrupt();
  });
  loop.post([&] {
    order += 'b';
    loop.stop();
  });
  loop.run();
  EXPECT_EQ(order, "aib") << "two interrupts before the loop looks are one";

  std::thread other([&] {
    std::this_thread::sleep_for(milliseconds(20));
    loop.interrupt();
  });
  loop.setInterruptHandler([&] { loop.stop(); });
  loop.run();  // sleeps until the interrupt
  other.join();
}

TEST(MainLoopTests, keepsWhatIsNotDueForTheNextRun) {
  MainLoop loop;
  int runs = 0;
  loop.postAfter(milliseconds(20), [&] {
    ++runs;
    loop.stop();
  });
  loop.post([&] { loop.stop(); });
  loop.run();
  EXPECT_EQ(runs, 0);
  loop.run();
  EXPECT_EQ(runs, 1);
}

}  // namespace
}  // namespace quorvane
