#pragma once

#include <optional>

#include <sys/resource.h>

namespace quorvane {

/// The limit of open descriptors that was in force before `raiseDescriptorLimit` changed it; nothing if it never did.
std::optional<rlimit> descriptorLimitBeforeRaise();

}  // namespace quorvane
