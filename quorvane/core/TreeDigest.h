#pragma once

#include "quorvane/core/Sha256.h"
#include "quorvane/platform/FileSystem.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane {

/// Computes the digest of a tree folder by folder. It changes with every name, kind, permission, owner, inode, size,
/// modification and status-change time below the root; of a folder at the root its place and its status-change time do
/// not count, so that moving the tree keeps its digest. Content is not read: a changed content shows in the times.
///
/// docs/formats/tree-digest.md has the exact bytes. Belongs to one thread.
class TreeDigest {
 public:
  /// A subfolder that is finished.
  struct Child {
    std::string_view name;
    Sha256Digest digest;
  };

  /// Over the entries of one folder that are no folders, in the order of their names.
  Sha256Digest ofEntries(const FolderListing& listing);

  /// Over a folder: itself, its entries, and its subfolders in the order of their names.
  Sha256Digest ofFolder(const FileStatus& folder, bool isRoot, const Sha256Digest& entries,
                        const std::vector<Child>& children);

  /// Over a root that is no folder.
  Sha256Digest ofSingleObject(const FileStatus& object);

 private:
  void addStatus(const FileStatus& status, bool isRoot);
  void addName(std::string_view name);
  void flush();

  Sha256 hash_;
  std::vector<std::uint32_t> order_;
  std::string buffer_;
};

}  // namespace quorvane
