#include "quorvane/scan/ItemVerdict.h"

namespace quorvane {

ItemVerdict limitedByMeasurement(ItemVerdict verdict, const TreeMeasurement& tree) {
  if (!tree.mountsInside.empty()) return {SafetyLevel::blocked, "reason.mountInside"};
  if (verdict.safety != SafetyLevel::safe || !tree.isLowerBound()) return verdict;
  return {SafetyLevel::review, tree.unreadableCount > 0 ? "reason.partlyUnreadable" : "reason.changing"};
}

std::optional<FileTreeSnapshot> snapshotOf(const TreeMeasurement& tree, const FilePath& canonicalPath) {
  if (tree.isLowerBound()) return std::nullopt;
  return FileTreeSnapshot{identityOf(tree.root), canonicalPath, tree.digest};
}

}  // namespace quorvane
