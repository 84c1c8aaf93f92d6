#pragma once

#include "quorvane/base/FilePath.h"

#include <optional>

namespace quorvane {

/// The home that the system's user database names for the user whom this process runs as.
std::optional<FilePath> homeFromUserDatabase();

}  // namespace quorvane
