#include "quorvane/core/TreeWalker.h"

#include "quorvane/core/TreeWalk.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <optional>
#include <system_error>
#include <thread>

namespace quorvane {

namespace {

/// More threads than this only wait for each other in the kernel.
constexpr unsigned mostThreads = 8;

}  // namespace

/// The threads, and the work that waits for them: subfolders first, the deepest ones before all, so that few folders
/// stay open; then the next tree.
class TreeWalker::Pool {
 public:
  explicit Pool(FileSystem& fileSystem) : fileSystem_(fileSystem) {}

  ~Pool() {
    {
      const MutexLock lock(mutex_);
      closing_ = true;
    }
    changed_.notify_all();
    for (std::thread& thread : threads_) thread.join();
  }

  std::vector<TreeOutcome> measure(const std::vector<TreeRoot>& roots, const WalkRequest& request) {
    startThreads();
    WalkState state;
    std::deque<WalkTree> trees;
    for (const TreeRoot& root : roots) trees.emplace_back(trees.size(), root, request, state);
    {
      const MutexLock lock(mutex_);
      for (WalkTree& tree : trees) unbegun_.push_back(&tree);
      unfinishedTrees_ = trees.size();
      state_ = &state;
    }
    work(callersReader_, [this]() QV_REQUIRES(mutex_) { return unfinishedTrees_ == 0; });
    std::vector<TreeOutcome> outcomes;
    outcomes.reserve(trees.size());
    for (WalkTree& tree : trees) outcomes.push_back(tree.outcome());
    return outcomes;
  }

 private:
  /// The subfolders of one folder that nobody has taken yet.
  struct Waiting {
    WalkFolder* folder;
    std::uint32_t next;
  };

  /// A subfolder to be opened, or a tree to be begun.
  struct Job {
    WalkFolder* parent = nullptr;
    std::uint32_t place = 0;
    WalkTree* tree = nullptr;
  };

  void startThreads() {
    if (!threads_.empty()) return;
    const unsigned count = std::clamp(std::thread::hardware_concurrency(), 1u, mostThreads);
    try {
      for (unsigned i = 1; i < count; ++i) {
        threads_.emplace_back([this] {
          FolderReader reader(fileSystem_);
          work(reader, [this]() QV_REQUIRES(mutex_) { return closing_; });
        });
      }
    } catch (const std::system_error&) {
      // No more threads are to be had: those there are do the work, the caller among them.
    }
  }

  /// Takes jobs until `isOver`; waits where there is none.
  template <class IsOver>
  void work(FolderReader& reader, IsOver isOver) {
    MutexLock lock(mutex_);
    while (!isOver()) {
      const std::optional<Job> job = takeJob();
      if (!job) {
        ++sleeping_;
        changed_.wait(lock);
        --sleeping_;
        continue;
      }
      lock.unlock();
      perform(reader, *job);
      lock.lock();
    }
  }

  std::optional<Job> takeJob() QV_REQUIRES(mutex_) {
    if (!waiting_.empty()) {
      Waiting& last = waiting_.back();
      const Job job{last.folder, last.next++, nullptr};
      if (last.next == job.parent->children.size()) waiting_.pop_back();
      return job;
    }
    if (unbegun_.empty()) return std::nullopt;
    WalkTree* const tree = unbegun_.front();
    unbegun_.pop_front();
    return Job{nullptr, 0, tree};
  }

  void perform(FolderReader& reader, const Job& job) {
    if (job.parent) {
      goOn(reader, openChild(reader, *job.parent, job.place), job.parent);
    } else {
      beginTree(reader, *job.tree);
    }
  }

  void beginTree(FolderReader& reader, WalkTree& tree) {
    if (!tree.isStopped() && tree.request.begins && !tree.request.begins(tree.index)) cancel();
    if (tree.isStopped()) {
      tree.fail(cancelledError());
      endTree(reader, tree);
      return;
    }
    auto folder = reader.openRoot(tree);
    if (folder) {
      callForHelp();
      reader.read(*folder);
      goOn(reader, std::move(folder), nullptr);
    } else {
      endTree(reader, tree);
    }
  }

  /// For the trees that are still to be begun. Not before one of them is a folder: what a single file takes is less
  /// than to wake a thread.
  void callForHelp() {
    bool isHelpWanted = false;
    {
      const MutexLock lock(mutex_);
      isHelpWanted = sleeping_ > 0 && !unbegun_.empty();
    }
    if (isHelpWanted) changed_.notify_all();
  }

  std::unique_ptr<WalkFolder> openChild(FolderReader& reader, WalkFolder& parent, std::uint32_t place) {
    auto folder = reader.openChild(parent, place);
    if (parent.unopened.fetch_sub(1, std::memory_order_acq_rel) == 1) parent.descriptor.close();
    return folder;
  }

  /// Offers the subfolders of a folder that was read, and counts the folder itself as done; without one, its parent has
  /// one part less to wait for.
  void goOn(FolderReader& reader, std::unique_ptr<WalkFolder> folder, WalkFolder* parent) {
    if (folder && !folder->children.empty()) offer(*folder);
    WalkFolder* const done = folder ? folder.release() : parent;
    WalkTree& tree = done->tree;
    if (reader.finishPart(done)) endTree(reader, tree);
  }

  void offer(WalkFolder& folder) {
    bool isHelpWanted = false;
    {
      const MutexLock lock(mutex_);
      isHelpWanted = sleeping_ > 0 && (!waiting_.empty() || folder.children.size() > 1);
      waiting_.push_back({&folder, 0});
    }
    if (isHelpWanted) changed_.notify_one();
  }

  void cancel() {
    const MutexLock lock(mutex_);
    state_->isCancelled.store(true, std::memory_order_relaxed);
  }

  void endTree(const FolderReader& reader, WalkTree& tree) {
    if (tree.request.ends) tree.request.ends(tree.index, tree.outcome());
    bool isLast = false;
    {
      const MutexLock lock(mutex_);
      isLast = --unfinishedTrees_ == 0;
    }
    const bool isCallerWaiting = &reader != &callersReader_;
    if (isLast && isCallerWaiting) changed_.notify_all();
  }

  FileSystem& fileSystem_;
  FolderReader callersReader_{fileSystem_};
  std::vector<std::thread> threads_;
  Mutex mutex_;
  std::condition_variable_any changed_;
  std::vector<Waiting> waiting_ QV_GUARDED_BY(mutex_);
  std::deque<WalkTree*> unbegun_ QV_GUARDED_BY(mutex_);
  WalkState* state_ QV_GUARDED_BY(mutex_) = nullptr;
  std::size_t unfinishedTrees_ QV_GUARDED_BY(mutex_) = 0;
  std::size_t sleeping_ QV_GUARDED_BY(mutex_) = 0;
  bool closing_ QV_GUARDED_BY(mutex_) = false;
};

TreeWalker::TreeWalker(FileSystem& fileSystem) : pool_(std::make_unique<Pool>(fileSystem)) {}

TreeWalker::~TreeWalker() = default;

std::vector<TreeOutcome> TreeWalker::measure(const std::vector<TreeRoot>& roots, const WalkRequest& request) {
  return pool_->measure(roots, request);
}

}  // namespace quorvane
