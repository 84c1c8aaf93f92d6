#pragma once

#include "quorvane/base/FilePath.h"
#include "quorvane/base/Outcome.h"
#include "quorvane/base/StopToken.h"
#include "quorvane/core/FileIdentity.h"
#include "quorvane/platform/FileSystem.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quorvane {

/// A tree to be measured: the object `name` in an open folder, links not followed.
struct TreeRoot {
  int folder = -1;   ///< stays open until the walk is over
  std::string name;  ///< one component
};

/// What one pass over a tree found. With anything unreadable, the sums are lower bounds.
struct TreeMeasurement {
  FileIdentity identity;            ///< of the root
  std::uint64_t mount = 0;          ///< of the root
  std::int64_t allocatedBytes = 0;  ///< the folders' own blocks included, each object once: what `du` counts
  std::int64_t entryCount = 0;      ///< objects seen, the root included
  std::optional<FileTime> newestModification;
  std::string digest;                   ///< 64 hexadecimal digits; empty when not asked for
  std::vector<std::string> unreadable;  ///< relative to the root ("" is the root itself); the first thousand
  std::int64_t unreadableCount = 0;
  std::vector<std::string> mountsInside;  ///< relative to the root: other volumes, not entered; the first thousand
  bool changedWhileRead = false;          ///< something vanished or became something else during the walk

  bool isLowerBound() const { return unreadableCount > 0 || !mountsInside.empty() || changedWhileRead; }
};

struct WalkOptions {
  bool takesDigest = true;
};

/// How far a walk has come; any thread may look at it meanwhile.
struct WalkProgress {
  std::atomic<std::int64_t> entryCount{0};
};

/// Measures trees with one pass each, on all cores at once. Follows no link at any level, enters no other mount, and
/// needs memory for the folders on the way and not for the files.
///
/// The digest of a folder is SHA-256 over its sorted entries, those of its folders included, so it does not depend on
/// the order in which the threads came to them; docs/formats/tree-digest.md has the exact bytes.
class TreeWalker {
 public:
  explicit TreeWalker(FileSystem& fileSystem);
  ~TreeWalker();
  TreeWalker(const TreeWalker&) = delete;
  TreeWalker& operator=(const TreeWalker&) = delete;

  /// Measures one tree. Fails when the root cannot be read at all (its own reason), or with ECANCELED after a stop
  /// request. One call at a time; waits until the tree is measured.
  Outcome<TreeMeasurement, PosixError> measure(const TreeRoot& root, const WalkOptions& options, StopToken stop,
                                               WalkProgress* progress = nullptr);

 private:
  class Pool;
  FileSystem& fileSystem_;
  std::unique_ptr<Pool> pool_;
};

}  // namespace quorvane
