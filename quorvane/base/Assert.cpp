#include "quorvane/base/Assert.h"

#include <cstdio>
#include <cstdlib>

namespace quorvane {

void abortOnBrokenInvariant(const char* what, std::source_location where) {
  std::fprintf(stderr, "quorvane: broken invariant: %s (%s:%u)\n", what, where.file_name(),
               static_cast<unsigned>(where.line()));
  std::abort();
}

}  // namespace quorvane
