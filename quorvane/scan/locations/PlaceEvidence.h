#pragma once

#include "quorvane/core/ScanItem.h"
#include "quorvane/scan/locations/LocationTable.h"

namespace quorvane {

/// What the table of a home has to say of places, told by their paths alone: for people who look at what was found.
/// Nothing is decided by it.
class PlaceEvidence {
 public:
  /// Everything handed over outlives the object.
  PlaceEvidence(const LocationTable& table, const LocationFolders& folders) : table_(table), folders_(folders) {}

  /// What the rule that makes an item of such a place rests on; `none` where no rule does, or it does not say.
  Evidence of(const ScanItem& item) const;

 private:
  bool describes(const LocationRule& rule, const FilePath& path) const;
  FilePath locationOf(const LocationRule& rule) const;
  Evidence ofCacheEntry(const LocationRule& rule, const ScanItem& item) const;

  const LocationTable& table_;
  const LocationFolders& folders_;
};

}  // namespace quorvane
