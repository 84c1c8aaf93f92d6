#pragma once

#include "quorvane/core/ScanCategory.h"

#include <string>
#include <vector>

namespace quorvane {

/// The categories that a scan of some kind of home can find, in their order: those that can be asked for.
std::vector<ScanCategory> scannedCategories();

/// Their names, as a person types them.
std::vector<std::string> scannedCategoryNames();

}  // namespace quorvane
