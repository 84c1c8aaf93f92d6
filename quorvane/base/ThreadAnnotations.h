#pragma once

#include <mutex>

// clang's thread-safety analysis: which mutex guards which field, checked at compile time. Other compilers see nothing.
#if defined(__clang__)
#define QV_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define QV_THREAD_ATTRIBUTE(x)
#endif

#define QV_GUARDED_BY(mutex) QV_THREAD_ATTRIBUTE(guarded_by(mutex))
#define QV_REQUIRES(mutex) QV_THREAD_ATTRIBUTE(requires_capability(mutex))

namespace quorvane {

/// std::mutex, known to the analysis.
class QV_THREAD_ATTRIBUTE(capability("mutex")) Mutex {
 public:
  void lock() QV_THREAD_ATTRIBUTE(acquire_capability()) { mutex_.lock(); }
  void unlock() QV_THREAD_ATTRIBUTE(release_capability()) { mutex_.unlock(); }

 private:
  std::mutex mutex_;
};

/// Holds a mutex until the end of its scope; works with std::condition_variable_any.
class QV_THREAD_ATTRIBUTE(scoped_lockable) MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) QV_THREAD_ATTRIBUTE(acquire_capability(mutex)) : mutex_(mutex) { mutex_.lock(); }
  ~MutexLock() QV_THREAD_ATTRIBUTE(release_capability()) { mutex_.unlock(); }
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

  // For std::condition_variable_any only: the analysis treats a wait as holding the mutex throughout.
  void lock() QV_THREAD_ATTRIBUTE(no_thread_safety_analysis) { mutex_.lock(); }
  void unlock() QV_THREAD_ATTRIBUTE(no_thread_safety_analysis) { mutex_.unlock(); }

 private:
  Mutex& mutex_;
};

}  // namespace quorvane
