#include "quorvane/app/cli/terminal/InterruptSignal.h"

#include "tests/cli/CommandLineRun.h"

#include <gtest/gtest.h>
#include <pty.h>

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace quorvane {
namespace {

ExitCode endOfNextOperation(MainLoop& loop) {
  KeepingChannel drawn({});
  const InterruptSignal signal(loop, drawn);
  loop.setInterruptHandler([&] { loop.stop(); });
  loop.run();
  return signal.exitCode();
}

TEST(InterruptSignalTests, aSignalThatComesTooLateForOneOperationEndsTheNextAsItself) {
  MainLoop loop;
  KeepingChannel drawn({});
  {
    const InterruptSignal signal(loop, drawn);
    ::raise(SIGTERM);
  }
  EXPECT_EQ(endOfNextOperation(loop), ExitCode::terminated);
  {
    const InterruptSignal signal(loop, drawn);
    ::raise(SIGINT);
    ::raise(SIGHUP);
  }
  EXPECT_EQ(endOfNextOperation(loop), ExitCode::cancelled) << "the first one counts";
}

TEST(InterruptSignalTests, noReaderThatReadsNothingHoldsItUp) {
  std::array<int, 2> pipe{}, terminal{};
  ASSERT_EQ(::pipe(pipe.data()), 0);
  ASSERT_EQ(::openpty(&terminal[0], &terminal[1], nullptr, nullptr, nullptr), 0);
  const std::array<FileDescriptor, 4> ends{FileDescriptor(pipe[0]), FileDescriptor(pipe[1]),
                                           FileDescriptor(terminal[0]), FileDescriptor(terminal[1])};
  for (const int written : {pipe[1], terminal[1]}) {
    DescriptorChannel channel(written);
    MainLoop loop;
    const InterruptSignal signal(loop, channel);
    channel.write("shown\n");
    ::raise(SIGTERM);
    channel.write(std::string(std::size_t{1} << 20, 'x'));  // more than either holds
    EXPECT_EQ(channel.failure(), 0);
    EXPECT_EQ(signal.exitCode(), ExitCode::terminated);
    EXPECT_EQ(::fcntl(written, F_GETFL) & O_NONBLOCK, 0) << "others write there as well";
  }
}

}  // namespace
}  // namespace quorvane
