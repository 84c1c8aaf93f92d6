#include "quorvane/platform/SystemPlatform.h"

#include <malloc.h>

namespace quorvane {

/// The C library's own settings give each thread a pool that grows page by page, and return what was freed at once: a
/// run that announces batch after batch then spends a twentieth of its time in getting the same memory again.
void keepFreedMemory() {
  constexpr int kept = 32 << 20;  // bytes; as much as the C library takes for the second of them
  // NOLINTBEGIN(concurrency-mt-unsafe): there are no threads yet
  ::mallopt(M_ARENA_MAX, 1);
  ::mallopt(M_MMAP_THRESHOLD, kept);
  ::mallopt(M_TRIM_THRESHOLD, kept);
  // NOLINTEND(concurrency-mt-unsafe)
}

}  // namespace quorvane
