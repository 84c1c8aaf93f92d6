#pragma once

#include "quorvane/core/SafetyLevel.h"
#include "quorvane/core/TreeWalker.h"

#include <string>

namespace quorvane {

/// How safe an item is to remove, and why.
struct ItemVerdict {
  SafetyLevel safety = SafetyLevel::blocked;
  std::string reasonKey;

  bool operator==(const ItemVerdict&) const = default;
};

/// The verdict as far as measuring bears it out: what holds another mount is blocked, and what could not be seen as a
/// whole is not safe.
ItemVerdict limitedByMeasurement(ItemVerdict verdict, const TreeMeasurement& tree);

}  // namespace quorvane
