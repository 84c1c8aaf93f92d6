#include "quorvane/core/FileTreeSnapshot.h"

#include "quorvane/core/TreeWalker.h"

namespace quorvane {

std::optional<FileTreeSnapshot> snapshotOf(const TreeMeasurement& tree, const FilePath& canonicalPath) {
  if (tree.isLowerBound()) return std::nullopt;
  return FileTreeSnapshot{identityOf(tree.root), canonicalPath, tree.digest};
}

}  // namespace quorvane
