#include "quorvane/app/cli/terminal/InterruptSignal.h"

#include <gtest/gtest.h>

namespace quorvane {
namespace {

ExitCode endOfNextOperation(MainLoop& loop) {
  const InterruptSignal signal(loop);
  loop.setInterruptHandler([&] { loop.stop(); });
  loop.run();
  return signal.exitCode();
}

TEST(InterruptSignalTests, aSignalThatComesTooLateForOneOperationEndsTheNextAsItself) {
  MainLoop loop;
  {
    const InterruptSignal signal(loop);
    ::raise(SIGTERM);
  }
  EXPECT_EQ(endOfNextOperation(loop), ExitCode::terminated);
  {
    const InterruptSignal signal(loop);
    ::raise(SIGINT);
    ::raise(SIGHUP);
  }
  EXPECT_EQ(endOfNextOperation(loop), ExitCode::cancelled) << "the first one counts";
}

}  // namespace
}  // namespace quorvane
