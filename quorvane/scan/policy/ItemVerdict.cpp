#include "quorvane/scan/policy/ItemVerdict.h"

namespace quorvane {

ItemVerdict limitedByMeasurement(ItemVerdict verdict, const TreeMeasurement& tree) {
  if (!tree.mountsInside.empty()) return {SafetyLevel::blocked, "reason.mountInside"};
  if (verdict.safety != SafetyLevel::safe || !tree.isLowerBound()) return verdict;
  return {SafetyLevel::review, tree.unreadableCount > 0 ? "reason.partlyUnreadable" : "reason.changing"};
}

}  // namespace quorvane
