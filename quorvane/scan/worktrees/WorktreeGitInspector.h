#pragma once

#include "quorvane/base/CaseNames.h"
#include "quorvane/base/FilePath.h"
#include "quorvane/base/StopToken.h"
#include "quorvane/core/ScanCoverage.h"
#include "quorvane/platform/FileSystem.h"
#include "quorvane/platform/GitPrograms.h"
#include "quorvane/platform/ProcessRunner.h"

#include <optional>
#include <vector>

namespace quorvane {

/// What would be lost with a worktree, as far as git knows.
enum class WorktreeGitState {
  merged,     ///< nothing: no changes, and its commit is contained in the main branch
  committed,  ///< no changes, but commits that the main branch does not contain, or there is no main branch
  dirty,      ///< changed or untracked files
  unknown,    ///< it could not be proved which
};
QV_CASE_NAMES(WorktreeGitState, merged, committed, dirty, unknown)

/// What became of asking git about one worktree.
struct WorktreeFinding {
  WorktreeGitState state = WorktreeGitState::unknown;
  std::vector<ScanCoverageNote> notes;  ///< without a path

  bool operator==(const WorktreeFinding&) const = default;
};

/// The worktree that git is asked about.
struct WorktreeQuery {
  FilePath url;  ///< absolute; its ancestors' links are followed, its own is not
  bool processStandsInside = false;
};

/// Asks git about worktrees, and believes it only as far as it can be held to it.
///
/// Git runs so that a repository's own configuration can neither start a program nor write, nor fetch, nor point at
/// another folder: no hooks, no file-system monitor, no filter drivers, no transport, no optional locks, no submodules,
/// and nobody's configuration but the repository's. Nothing on the disk is changed.
class WorktreeGitInspector {
 public:
  /// Asks once whether git can be used, which waits for up to some twenty seconds each for two short commands. Git
  /// older than 2.31 cannot be kept in check and counts as missing.
  WorktreeGitInspector(FileSystem& fileSystem, ProcessRunner& processRunner, const GitPrograms& programs = {});

  bool isGitAvailable() const { return isGitAvailable_; }

  /// The main branch is the first that exists of main, master and trunk, then of origin's main and master.
  ///
  /// Anything unexpected is `unknown`: no ".git", no git, a failure, an exit status git does not document, more output
  /// than is kept, a stop request, or twenty seconds for one command. So is, whatever git says, a worktree that is
  /// locked, that a process stands in, that is amid a merge or the like, that hides changes from git, or that holds
  /// submodules or its own repository; a note says which. Of the last three, one with visible changes is `dirty`.
  WorktreeFinding inspect(const WorktreeQuery& query, StopToken stop) const;

 private:
  FileSystem& fileSystem_;
  ProcessRunner& processRunner_;
  FilePath gitURL_;
  bool isGitAvailable_ = false;
};

}  // namespace quorvane
