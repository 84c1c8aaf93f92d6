#pragma once

#include "quorvane/platform/FileSystem.h"
#include "quorvane/scan/LocationFindings.h"
#include "quorvane/scan/locations/LocationFolders.h"
#include "quorvane/scan/locations/LocationTable.h"

#include <memory>
#include <string>
#include <string_view>

namespace quorvane {

/// A name in a folder, and what stands there.
struct ListedEntry {
  std::string name;
  bool isFolder = false;
  FileStatus status;  ///< of everything but folders
};

/// Makes candidates of what a location holds: how they are called, of which category they are, and how safe they are as
/// far as their place, their name and a cache directory tag tell.
class CandidateClassifier {
 public:
  /// Everything handed over outlives the classifier.
  CandidateClassifier(FileSystem& fileSystem, const LocationTable& table, const LocationFolders& folders)
      : fileSystem_(fileSystem), table_(table), folders_(folders) {}

  /// As the rule says; blocked where the place belongs to a sensitive application.
  ScanCandidate candidate(const std::shared_ptr<const FoundFolder>& folder, const LocationRule& rule,
                          std::string_view name) const;

  /// An entry of a cache folder: safe only with a known name (`isInKnown`: below one), or with a tag.
  ScanCandidate cacheEntry(const std::shared_ptr<const FoundFolder>& folder, const LocationRule& rule,
                           const ListedEntry& entry, bool isInKnown) const;

  /// A folder that carries a tag.
  ScanCandidate taggedFolder(const std::shared_ptr<const FoundFolder>& folder, const LocationRule& rule,
                             std::string_view name, int descriptor) const;

  /// The location itself, of which the rule expects a log file or a folder: anything else is for review.
  ScanCandidate itself(const std::shared_ptr<const FoundFolder>& folder, const LocationRule& rule,
                       std::string_view name, const FileStatus& status) const;

  /// Whether an open folder is tagged as a cache and is nobody's working copy.
  bool isDisposable(int folder) const;

 private:
  std::string displayNameOf(const LocationRule& rule, std::string_view name) const;
  bool isBrowsers(const LocationRule& rule, const FilePath& path) const;
  bool isTagged(const FoundFolder& folder, const std::string& name) const;

  FileSystem& fileSystem_;
  const LocationTable& table_;
  const LocationFolders& folders_;
};

}  // namespace quorvane
