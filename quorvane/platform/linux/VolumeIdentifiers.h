#pragma once

#include "quorvane/base/Uuid.h"

#include <array>
#include <cstdint>

namespace quorvane {

/// The identifier of a file system that tells none: a version 8 UUID (RFC 9562) made of its type and its `f_fsid`. No
/// two different pairs give the same one, so nothing needs to be hashed.
Uuid derivedVolumeUuid(std::uint32_t fileSystemType, std::array<std::int32_t, 2> fileSystemID);

}  // namespace quorvane
