#pragma once

#include "quorvane/platform/FileDescriptor.h"
#include "quorvane/platform/PosixError.h"

#include <spawn.h>
#include <sys/types.h>

// What starting a child needs and each system offers in its own way.

namespace quorvane {

struct Pipe {
  FileDescriptor readEnd;
  FileDescriptor writeEnd;
};

/// A pipe that no child inherits by itself, the read end not blocking.
Outcome<Pipe, PosixError> makePipe();

/// Lets no descriptor but 0, 1 and 2 reach the child. To be called after all other actions; an `errno` number, or 0.
int keepOnlyStandardStreams(posix_spawn_file_actions_t& actions, short& flags);

/// Becomes readable when the child ends; not open where the system cannot tell.
FileDescriptor watchForEnd(pid_t child);

/// Gives a child that has just been started the descriptor limit that this process was started with. Programs that were
/// started with a high limit can be slow (some close every possible number) or break (select), so it must not leak.
void restoreDescriptorLimit(pid_t child);

}  // namespace quorvane
