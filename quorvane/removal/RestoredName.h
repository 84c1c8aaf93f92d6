#pragma once

#include "quorvane/base/Date.h"

#include <string>
#include <string_view>

namespace quorvane {

/// The name for an item that is restored beside another one: the leaf with " (restored ", the day and, from the second
/// attempt on, a number before its extension, cut to what a name can hold. "plan.txt" becomes
/// "plan (restored 2026-11-21).txt".
std::string restoredName(std::string_view leaf, bool isFolder, Date date, int attempt);

}  // namespace quorvane
