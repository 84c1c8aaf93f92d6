#pragma once

#include "quorvane/base/FilePath.h"
#include "quorvane/base/Outcome.h"
#include "quorvane/platform/FileDescriptor.h"
#include "quorvane/platform/FileSystem.h"
#include "quorvane/platform/PosixError.h"

#include <map>
#include <optional>

namespace quorvane {

/// Resolves many paths that share their folders, most of which do not exist. Each answer is the one of
/// `FileSystem::resolved` at the moment of its first question. What is below a missing folder costs nothing, anything
/// else one look into its folder; only links are followed at length.
///
/// Keeps the folders open that it looked into, for as long as it lives.
class PathResolver {
 public:
  explicit PathResolver(FileSystem& fileSystem) : fileSystem_(fileSystem) {}

  /// The resolved form of an absolute, standardised path.
  Outcome<FilePath, PosixError> resolved(const FilePath& path) { return at(path).path; }

 private:
  struct Place {
    Outcome<FilePath, PosixError> path;
    bool isMissing = false;
    std::optional<Outcome<FileDescriptor, PosixError>> folder = std::nullopt;  ///< once it was opened
  };

  Place& at(const FilePath& path);
  Place looked(const FilePath& path);
  std::optional<Place> lookedInto(Place& folder, const FilePath& path);

  FileSystem& fileSystem_;
  std::map<FilePath, Place> places_;
};

}  // namespace quorvane
