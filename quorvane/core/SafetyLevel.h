#pragma once

#include "quorvane/base/CaseNames.h"

#include <string_view>

namespace quorvane {

/// How safe it is to remove an item.
enum class SafetyLevel {
  safe,     ///< regenerable or clearly disposable; may start selected
  review,   ///< the user must look before removing
  blocked,  ///< shown, never selected by the scanner, refused by cleaning
};
QV_CASE_NAMES(SafetyLevel, safe, review, blocked)

/// The message key of the level's title.
std::string_view titleKey(SafetyLevel level);

/// The name of the symbol that stands for the level in a desktop.
std::string_view symbolName(SafetyLevel level);

}  // namespace quorvane
