#include "quorvane/platform/FolderSync.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <system_error>
#include <utility>

namespace quorvane {

namespace {

constexpr std::size_t mostThreads = 4;

/// One descriptor for each folder, the first: it was opened first, and is told of every write that failed since.
std::vector<int> withoutRepeated(FileSystem& fileSystem, const std::vector<int>& folders) {
  std::vector<int> kept;
  std::set<std::pair<std::int32_t, std::uint64_t>> known;
  for (const int folder : folders) {
    const auto status = fileSystem.status(folder);
    const bool isKnown = status && !known.emplace(status->device, status->inode).second;
    if (!isKnown) kept.push_back(folder);
  }
  return kept;
}

}  // namespace

FolderSync::FolderSync(FileSystem& fileSystem, const std::vector<int>& folders)
    : fileSystem_(fileSystem), folders_(withoutRepeated(fileSystem, folders)) {
  try {
    while (threads_.size() < std::min(folders_.size(), mostThreads)) threads_.emplace_back([this] { work(); });
  } catch (const std::system_error&) {
    // No more threads are to be had: who waits does the work.
  }
}

FolderSync::~FolderSync() { (void)wait(); }

Outcome<void, PosixError> FolderSync::wait() {
  work();
  for (std::thread& thread : threads_) thread.join();
  threads_.clear();
  const MutexLock lock(mutex_);
  if (failure_) return failure(*failure_);
  return {};
}

void FolderSync::work() {
  for (std::size_t i = next_++; i < folders_.size(); i = next_++) {
    const auto done = fileSystem_.synchronise(folders_[i]);
    if (done) continue;
    const MutexLock lock(mutex_);
    if (!failure_) failure_ = done.error();
  }
}

}  // namespace quorvane
