#include "quorvane/platform/SystemPlatform.h"

#include <unistd.h>

namespace quorvane {

std::uint32_t systemUser() { return ::geteuid(); }

}  // namespace quorvane
