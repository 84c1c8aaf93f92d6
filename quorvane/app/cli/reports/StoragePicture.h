#pragma once

#include "quorvane/app/cli/terminal/ReportText.h"
#include "quorvane/core/StorageSnapshot.h"

#include <string>

namespace quorvane {

/// How a volume is used, for people: one bar where it is laid out, and how much each part of it is.
std::string storagePicture(const StorageSnapshot& storage, const FilePath& home, const ReportStyle& style);

}  // namespace quorvane
