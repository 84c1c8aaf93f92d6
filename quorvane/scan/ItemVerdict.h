#pragma once

#include "quorvane/core/FileTreeSnapshot.h"
#include "quorvane/core/SafetyLevel.h"
#include "quorvane/core/TreeWalker.h"

#include <optional>
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

/// What to recognise the tree by; nothing when not all of it was seen, for then nobody can say later that it is the
/// same.
std::optional<FileTreeSnapshot> snapshotOf(const TreeMeasurement& tree, const FilePath& canonicalPath);

}  // namespace quorvane
