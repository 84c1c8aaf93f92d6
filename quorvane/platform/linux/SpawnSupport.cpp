#include "quorvane/platform/posix/SpawnSupport.h"

#include "quorvane/platform/posix/DescriptorLimit.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace quorvane {

namespace {

constexpr int firstOtherDescriptor = 3;

/// Moves a descriptor out of the range of the standard streams, where a process started without them may get it.
FileDescriptor aboveStandardStreams(int number) {
  FileDescriptor given(number);
  if (number >= firstOtherDescriptor) return given;
  return FileDescriptor(::fcntl(number, F_DUPFD_CLOEXEC, firstOtherDescriptor));
}

}  // namespace

Outcome<Pipe, PosixError> makePipe() {
  int ends[2] = {-1, -1};
  if (::pipe2(ends, O_CLOEXEC) != 0) return failure(lastPosixError());
  Pipe pipe{aboveStandardStreams(ends[0]), aboveStandardStreams(ends[1])};
  if (!pipe.readEnd.isOpen() || !pipe.writeEnd.isOpen()) return failure(lastPosixError());
  if (::fcntl(pipe.readEnd.number(), F_SETFL, O_NONBLOCK) != 0) return failure(lastPosixError());
  return pipe;
}

int keepOnlyStandardStreams(posix_spawn_file_actions_t& actions, short&) {
  return ::posix_spawn_file_actions_addclosefrom_np(&actions, firstOtherDescriptor);
}

FileDescriptor watchForEnd(pid_t child) {
  return FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));
}

void restoreDescriptorLimit(pid_t child) {
  // posix_spawn cannot set limits. The child is still being loaded when this takes effect, or hardly is: it may see the
  // raised limit for a moment.
  if (const auto before = descriptorLimitBeforeRaise()) ::prlimit(child, RLIMIT_NOFILE, &*before, nullptr);
}

}  // namespace quorvane
