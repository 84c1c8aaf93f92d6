#pragma once

#include "quorvane/base/FilePath.h"
#include "quorvane/platform/FileSystem.h"
#include "quorvane/scan/locations/ScanSettings.h"

#include <string>
#include <vector>

namespace quorvane {

/// The folders of a home that a cloud service keeps in step. What is removed there is removed on every device, so a
/// scan leaves them out.
class CloudScope {
 public:
  /// Knows the folders by the names that the services give them; resolves those that are links now.
  CloudScope(FileSystem& fileSystem, const FilePath& home, HomeLayout layout);

  /// Whether a standardised path with all links resolved is one of the folders, lies in one, or holds one.
  bool touches(const FilePath& canonicalPath) const;

 private:
  bool isNamedLikeOne(const FilePath& canonicalPath) const;

  FilePath home_;
  HomeLayout layout_;
  std::vector<FilePath> folders_;
};

}  // namespace quorvane
