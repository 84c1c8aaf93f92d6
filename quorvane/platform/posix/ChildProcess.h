#pragma once

#include "quorvane/platform/FileDescriptor.h"
#include "quorvane/platform/PosixError.h"
#include "quorvane/platform/ProcessRunner.h"

#include <cstdint>

#include <sys/types.h>

namespace quorvane {

/// A child in a session of its own: it cannot ask anything on the terminal, a key pressed there does not reach it, and
/// signals from here reach all that it started, except what has left for another session.
///
/// The ended child is kept as a zombie until this object goes, so that its number can be no other process's meanwhile.
class ChildProcess {
 public:
  static Outcome<ChildProcess, PosixError> start(const ProcessRequest& request);

  ChildProcess(ChildProcess&& other) noexcept;
  ChildProcess& operator=(ChildProcess&&) = delete;
  /// Collects the child if it has ended. It is not waited for.
  ~ChildProcess();

  /// Looks without waiting. Once it was true, `exitCode` tells how.
  bool hasEnded();
  /// 128 + the signal for a child that a signal ended; -1 if the system did not keep it.
  std::int32_t exitCode() const { return exitCode_; }

  /// Asks everything in the child's session to end, also what is stopped.
  void terminate() const;
  /// Ends everything in the child's session.
  void kill() const;

  FileDescriptor& standardOutput() { return standardOutput_; }
  FileDescriptor& standardError() { return standardError_; }
  /// Readable once the child has ended; not open where the system cannot tell.
  const FileDescriptor& end() const { return end_; }

 private:
  ChildProcess(pid_t identifier, FileDescriptor standardOutput, FileDescriptor standardError, FileDescriptor end);

  pid_t identifier_;
  FileDescriptor standardOutput_;
  FileDescriptor standardError_;
  FileDescriptor end_;
  bool hasEnded_ = false;
  std::int32_t exitCode_ = -1;
};

}  // namespace quorvane
