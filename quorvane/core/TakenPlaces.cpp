#include "quorvane/core/TakenPlaces.h"

namespace quorvane {

bool TakenPlaces::take(const FilePath& canonicalPath) {
  if (overlaps(canonicalPath)) return false;
  places_.insert(canonicalPath);
  return true;
}

bool TakenPlaces::overlaps(const FilePath& canonicalPath) const {
  return covers(canonicalPath) || holdsTaken(canonicalPath);
}

bool TakenPlaces::covers(const FilePath& canonicalPath) const {
  for (FilePath above = canonicalPath; above.bytes.size() > 1; above = parentOf(above))
    if (places_.contains(above)) return true;
  return false;
}

bool TakenPlaces::holdsTaken(const FilePath& path) const {
  const auto first = places_.lower_bound(FilePath{path.bytes + "/"});
  return first != places_.end() && isBelow(*first, path);
}

}  // namespace quorvane
