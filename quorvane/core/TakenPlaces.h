#pragma once

#include "quorvane/base/FilePath.h"

#include <set>

namespace quorvane {

/// Places of which none lies inside another, by their canonical paths.
class TakenPlaces {
 public:
  /// Takes a place; false when it is taken, lies in one that is, or holds one.
  bool take(const FilePath& canonicalPath);

  /// Whether a place is taken, lies in one that is, or holds one.
  bool overlaps(const FilePath& canonicalPath) const;

  /// Whether a place is taken, or lies in one that is.
  bool covers(const FilePath& canonicalPath) const;

 private:
  bool holdsTaken(const FilePath& path) const;

  std::set<FilePath> places_;
};

}  // namespace quorvane
