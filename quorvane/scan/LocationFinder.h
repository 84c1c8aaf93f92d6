#pragma once

#include "quorvane/base/Date.h"
#include "quorvane/core/ScanCoverage.h"
#include "quorvane/platform/FileSystem.h"
#include "quorvane/scan/LocationFolders.h"
#include "quorvane/scan/LocationTable.h"
#include "quorvane/scan/ScanScope.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane {

/// An open folder on the way to something found.
struct FoundFolder {
  FileDescriptor descriptor;
  FilePath path;           ///< as the user knows it
  FilePath canonicalPath;  ///< links resolved
};

/// Something that may become an item once it is measured.
struct ScanCandidate {
  const LocationRule* rule = nullptr;
  std::shared_ptr<const FoundFolder> folder;
  std::string name;  ///< in that folder
  std::string displayName;
  ScanCategory category = ScanCategory::applicationCache;
  SafetyLevel safety = SafetyLevel::blocked;  ///< as far as the place alone tells
  std::string reasonKey;

  FilePath path() const { return joined(folder->path, name); }
  FilePath canonicalPath() const { return joined(folder->canonicalPath, name); }
};

/// What came of looking for one location of the table.
struct LocationFindings {
  std::vector<ScanCandidate> candidates;   ///< in the order of their paths
  ScanCoverageEntry location;              ///< of the location itself
  bool wasRead = false;                    ///< at least one of the folders that the location stands for
  std::vector<ScanCoverageEntry> leftOut;  ///< places in it that must not become items
};

/// Looks for the locations of a table in one home. Lists folders, measures nothing, follows no link below a base.
class LocationFinder {
 public:
  /// Everything handed over outlives the finder. `now` is the moment that ages are counted to.
  LocationFinder(FileSystem& fileSystem, const LocationTable& table, const LocationFolders& folders,
                 const ScanScope& scope, Date now);

  /// Finds what one rule of the table names. Places that were found before are left out.
  LocationFindings find(const LocationRule& rule);

 private:
  using Folder = std::shared_ptr<const FoundFolder>;
  struct Listed {
    std::string name;
    bool isFolder;
    FileStatus status;  ///< of everything but folders
  };

  enum class Claim { none, whole, inside };

  void findIn(const Folder& folder, const LocationRule& rule, LocationFindings& findings);
  std::vector<Folder> expanded(const LocationRule& rule, std::string_view path, LocationFindings& findings);
  void findEntries(const Folder& folder, const LocationRule& rule, LocationFindings& findings);
  void findUnclaimed(const Folder& folder, const LocationRule& rule, bool isKnown, LocationFindings& findings);
  void findTagged(const Folder& folder, const LocationRule& rule, int depth, LocationFindings& findings);
  void findItself(const LocationRule& rule, LocationFindings& findings);

  void noteFailure(PosixError error, const FilePath& path, LocationFindings& findings) const;
  void noteRead(LocationFindings& findings) const;
  void consider(ScanCandidate candidate, LocationFindings& findings);
  bool isIgnoredThroughLink(const ScanCandidate& candidate) const;
  ScanCandidate candidate(const Folder& folder, const LocationRule& rule, std::string_view name) const;
  std::string displayNameOf(const LocationRule& rule, std::string_view name) const;
  void classifyCache(ScanCandidate& candidate, const Listed& entry, bool isKnown) const;
  static void doubt(ScanCandidate& candidate);
  bool isTagged(const Folder& folder, const std::string& name) const;
  bool isDisposable(int folder) const;
  bool isOldEnough(const Folder& folder, const Listed& entry) const;

  Folder openBase(LocationBase base, LocationFindings& findings);
  Folder openBelow(const Folder& folder, const std::string& name, LocationFindings& findings);
  std::vector<Listed> list(const Folder& folder, LocationFindings& findings);
  Claim claimOn(const FilePath& path) const;

  FileSystem& fileSystem_;
  const LocationTable& table_;
  const LocationFolders& folders_;
  const ScanScope& scope_;
  Date now_;
  std::vector<FilePath> claims_;  ///< patterns of what the other rules name, for rules that take all entries
  TakenPlaces taken_;
  FolderListing listing_;
};

}  // namespace quorvane
