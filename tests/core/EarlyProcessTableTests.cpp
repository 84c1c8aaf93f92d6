#include "quorvane/core/EarlyProcessTable.h"

#include "tests/support/ManualClock.h"
#include "tests/support/ScanHome.h"

#include <gtest/gtest.h>

namespace quorvane {
namespace {

using namespace std::chrono_literals;

TEST(EarlyProcessTableTests, handsOutWhatWasBegunOnceAndNotWhenItIsOld) {
  const auto program = [](ProcessTable& table) {
    const auto processes = table.read();
    return processes && processes->size() == 1 ? processes->front().program : "";
  };
  MadeProcessTable now;
  ManualClock clock{{}};
  EarlyProcessTable table(now, clock);
  const auto runs = [&](const char* name) {
    RunningProcess process;
    process.program = name;
    now.processes = std::vector{process};
  };

  runs("a");
  EXPECT_EQ(program(table), "a") << "nothing was begun";
  table.begin();
  clock.advanceUptime(1s);
  EXPECT_EQ(program(table), "a");
  EXPECT_EQ(now.readings, 2) << "what was begun is handed out";
  runs("b");
  EXPECT_EQ(program(table), "b") << "but once";
  table.begin();
  table.begin();
  clock.advanceUptime(1001ms);
  EXPECT_EQ(program(table), "b");
  EXPECT_EQ(now.readings, 5) << "what is older is read anew; what was just begun is not begun again";
}

}  // namespace
}  // namespace quorvane
