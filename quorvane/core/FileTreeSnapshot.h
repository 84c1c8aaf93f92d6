#pragma once

#include "quorvane/base/FilePath.h"
#include "quorvane/core/FileIdentity.h"

#include <optional>
#include <string>

namespace quorvane {

/// What a scan remembers of an item, to prove later that it is still the same: any difference refuses its removal.
struct FileTreeSnapshot {
  FileIdentity identity;
  FilePath canonicalPath;  ///< standardised, links resolved
  std::string digest;      ///< of the whole tree; `TreeDigest` says over what

  bool operator==(const FileTreeSnapshot&) const = default;
};
QV_JSON_FIELDS(FileTreeSnapshot, identity, canonicalPath, digest)

struct TreeMeasurement;

/// What to recognise the tree by; nothing when not all of it was seen, for then nobody can say later that it is the
/// same.
std::optional<FileTreeSnapshot> snapshotOf(const TreeMeasurement& tree, const FilePath& canonicalPath);

}  // namespace quorvane
