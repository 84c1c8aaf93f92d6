#include "quorvane/scan/StorageSummary.h"

#include <list>

namespace quorvane {

namespace {

/// The roots to be measured: the home first, then the folders of applications that exist and lie on its volume.
class SummaryRoots {
 public:
  SummaryRoots(const ScanServices& services, const ScanSettings& settings, std::int64_t volumeSize)
      : fileSystem_(services.fileSystem) {
    add(settings.folders.home);
    hasHome_ = !roots_.empty();
    // Device numbers do not tell volumes apart: each part of one btrfs has its own.
    for (const FilePath& path : settings.applicationRoots)
      if (const auto capacity = services.volumes.capacity(path); capacity && capacity->total == volumeSize) add(path);
  }

  bool hasHome() const { return hasHome_; }
  const std::vector<TreeRoot>& roots() const { return roots_; }
  bool isInHome(std::size_t index) const { return isBelow(paths_[index], paths_[0]); }

 private:
  void add(const FilePath& path) {
    const auto canonical = fileSystem_.resolved(path);
    if (!canonical || canonical->bytes == "/") return;
    auto parent = fileSystem_.openStartingFolder(parentOf(*canonical));
    if (!parent || !fileSystem_.status(parent->number(), std::string(leafOf(*canonical)).c_str())) return;
    parents_.push_back(*std::move(parent));
    roots_.push_back({parents_.back().number(), std::string(leafOf(*canonical))});
    paths_.push_back(*canonical);
  }

  FileSystem& fileSystem_;
  std::list<FileDescriptor> parents_;
  std::vector<TreeRoot> roots_;
  std::vector<FilePath> paths_;
  bool hasHome_ = false;
};

}  // namespace

Outcome<StorageSnapshot, ScanFault> storageSummary(const ScanServices& services, const ScanSettings& settings,
                                                   ScanPauseControl& control, const ScanProgressSink& progress) {
  const auto capacity = services.volumes.capacity(settings.folders.home);
  if (!capacity) return failure(ScanFault::homeUnreadable);
  const SummaryRoots roots(services, settings, capacity->total);
  if (!roots.hasHome()) return failure(ScanFault::homeUnreadable);
  WalkRequest request;
  request.takesDigest = false;
  request.stop = control.stopToken();
  request.begins = [&](std::size_t) { return control.waitWhilePaused(); };
  request.advances = [&](std::int64_t seen) {
    if (progress) progress({0, "storage.status.measuring", ScanActivitySnapshot{{}, seen}});
  };
  const auto outcomes = services.walker.measure(roots.roots(), request);
  if (control.stopToken().stopRequested()) return failure(ScanFault::cancelled);
  if (!outcomes.front()) return failure(ScanFault::homeUnreadable);
  StorageSnapshot snapshot{.total = capacity->total, .available = capacity->available};
  for (std::size_t i = 0; i < outcomes.size(); ++i) {
    // What changes while it is read is the normal state of a home; only what nobody could see makes the sums partial.
    snapshot.isPartial |= !outcomes[i] || outcomes[i]->unreadableCount > 0;
    if (!outcomes[i]) continue;
    (i == 0 ? snapshot.userFiles : snapshot.applications) += outcomes[i]->allocatedBytes;
    if (i > 0 && roots.isInHome(i)) snapshot.userFiles -= outcomes[i]->allocatedBytes;
  }
  return snapshot;
}

}  // namespace quorvane
