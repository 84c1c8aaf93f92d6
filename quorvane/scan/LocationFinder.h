#pragma once

#include "quorvane/base/Date.h"
#include "quorvane/core/ScanCoverage.h"
#include "quorvane/core/TakenPlaces.h"
#include "quorvane/platform/FileSystem.h"
#include "quorvane/scan/CandidateClassifier.h"
#include "quorvane/scan/LocationFindings.h"
#include "quorvane/scan/ScanScope.h"
#include "quorvane/scan/locations/LocationFolders.h"
#include "quorvane/scan/locations/LocationTable.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane {

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
  enum class Claim { none, inside, whole };
  /// What the rules claim of the entries of one folder.
  struct FolderClaims {
    std::map<std::string_view, Claim> named;
    Claim each = Claim::none;  ///< of every entry

    Claim on(std::string_view name) const;
  };

  void findIn(const Folder& folder, const LocationRule& rule, LocationFindings& findings);
  std::vector<Folder> expanded(const LocationRule& rule, std::string_view path, LocationFindings& findings);
  void findEntries(const Folder& folder, const LocationRule& rule, LocationFindings& findings);
  void findUnclaimed(const Folder& folder, const LocationRule& rule, bool isKnown, LocationFindings& findings);
  void findTagged(const Folder& folder, const LocationRule& rule, int depth, LocationFindings& findings);
  void findItself(const LocationRule& rule, LocationFindings& findings);
  void findParts(const Folder& folder, const LocationRule& rule, LocationFindings& findings);
  void findOne(const Folder& folder, const LocationRule& rule, std::string_view name, LocationFindings& findings);

  void consider(ScanCandidate candidate, LocationFindings& findings);
  bool isIgnoredThroughLink(const ScanCandidate& candidate) const;
  bool isOldEnough(const Folder& folder, const ListedEntry& entry) const;

  Folder openBase(LocationBase base, LocationFindings& findings);
  Outcome<Folder, PosixError> openedBase(LocationBase base);
  Folder openBelow(const Folder& folder, const std::string& name, LocationFindings& findings);
  std::vector<ListedEntry> list(const Folder& folder, LocationFindings& findings);
  void claim(const LocationRule& rule);
  FolderClaims claimsIn(const FilePath& folder) const;

  FileSystem& fileSystem_;
  CandidateClassifier classifier_;
  const LocationFolders& folders_;
  const ScanScope& scope_;
  Date now_;
  std::vector<FilePath> claims_;  ///< patterns of what the other rules name, for rules that take all entries
  std::map<LocationBase, Outcome<Folder, PosixError>> bases_;
  TakenPlaces taken_;
  FolderListing listing_;
};

}  // namespace quorvane
