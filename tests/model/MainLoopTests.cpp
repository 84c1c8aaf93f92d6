#include "quorvane/app/model/MainLoop.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <thread>

#include <unistd.h>

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

TEST(MainLoopTests, tellsWhatCanBeRead) {
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe(ends.data()), 0);
  const FileDescriptor reader(ends[0]);
  FileDescriptor writer(ends[1]);
  MainLoop loop;
  std::string read;
  loop.watch(reader.number(), [&] {
    char byte = 0;
    if (::read(reader.number(), &byte, 1) == 1) {
      read += byte;
    } else {  // the end stays readable
      loop.unwatch(reader.number());
      loop.postAfter(milliseconds(5), [&] { loop.stop(); });
    }
  });
  loop.post([&] { EXPECT_EQ(::write(writer.number(), "ab", 2), 2); });
  loop.postAfter(milliseconds(5), [&] {
    read += '-';
    writer.close();
  });
  loop.run();
  EXPECT_EQ(read, "ab-");
}

}  // namespace
}  // namespace quorvane
