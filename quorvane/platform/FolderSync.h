#pragma once

#include "quorvane/base/ThreadAnnotations.h"
#include "quorvane/platform/FileSystem.h"

#include <atomic>
#include <optional>
#include <thread>
#include <vector>

namespace quorvane {

/// Brings the entries of several folders to the disk, all at once and while the caller goes on: what they cost together
/// is then little more than what one of them costs, since a journal is written once for all that wait for it.
class FolderSync {
 public:
  /// Begins, on threads of its own. The descriptors stay open until `wait` has returned; of several for one folder the
  /// first one is used, which has to be the one that was opened first.
  FolderSync(FileSystem& fileSystem, const std::vector<int>& folders);
  /// Waits.
  ~FolderSync();
  FolderSync(const FolderSync&) = delete;
  FolderSync& operator=(const FolderSync&) = delete;

  /// Waits until every folder is on the disk, or tells why one of them may not be.
  Outcome<void, PosixError> wait();

 private:
  void work();

  FileSystem& fileSystem_;
  const std::vector<int> folders_;
  std::atomic<std::size_t> next_ = 0;
  Mutex mutex_;
  std::optional<PosixError> failure_ QV_GUARDED_BY(mutex_);
  std::vector<std::thread> threads_;
};

}  // namespace quorvane
