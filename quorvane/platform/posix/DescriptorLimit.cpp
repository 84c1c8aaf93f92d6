#include "quorvane/platform/posix/DescriptorLimit.h"

#include "quorvane/base/ThreadAnnotations.h"
#include "quorvane/platform/SystemPlatform.h"

namespace quorvane {

namespace {

// The limit belongs to the whole process, and so does the memory of what it was.
struct RememberedLimit {
  Mutex mutex;
  std::optional<rlimit> before QV_GUARDED_BY(mutex);
};

RememberedLimit& rememberedLimit() {
  static RememberedLimit limit;
  return limit;
}

}  // namespace

std::optional<rlimit> descriptorLimitBeforeRaise() {
  RememberedLimit& remembered = rememberedLimit();
  const MutexLock lock(remembered.mutex);
  return remembered.before;
}

void raiseDescriptorLimit() {
  RememberedLimit& remembered = rememberedLimit();
  const MutexLock lock(remembered.mutex);
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == limit.rlim_max) return;
  const rlimit before = limit;
  limit.rlim_cur = limit.rlim_max;
  if (::setrlimit(RLIMIT_NOFILE, &limit) == 0 && !remembered.before) remembered.before = before;
}

}  // namespace quorvane
