#include "quorvane/scan/locations/PlaceEvidence.h"

#include "quorvane/scan/policy/PathPattern.h"

#include <algorithm>
#include <utility>

namespace quorvane {

Evidence PlaceEvidence::of(const ScanItem& item) const {
  for (const LocationRule& rule : table_.rules)
    if (rule.kind != LocationKind::anyCache && describes(rule, item.url.path)) return rule.evidence;
  for (const LocationRule& rule : table_.rules)
    if (rule.kind == LocationKind::anyCache && matched(item.url.path, locationOf(rule)) == PatternMatch::below)
      return ofCacheEntry(rule, item);
  return {};
}

FilePath PlaceEvidence::locationOf(const LocationRule& rule) const { return joined(folders_.at(rule.base), rule.path); }

bool PlaceEvidence::describes(const LocationRule& rule, const FilePath& path) const {
  const FilePath location = locationOf(rule);
  const auto isAt = [&](std::string_view entry) {
    return matched(path, joined(location, entry)) == PatternMatch::exactly;
  };
  switch (rule.subject) {
    case LocationSubject::itself: return matched(path, location) == PatternMatch::exactly;
    case LocationSubject::parts: return std::ranges::any_of(partsOf(rule), isAt);
    case LocationSubject::taggedBelow: return matched(path, location) == PatternMatch::below;
    case LocationSubject::entries:
    case LocationSubject::files: return isAt("*") && asksFor(rule, leafOf(path));
  }
  std::unreachable();
}

/// In a cache home the name tells, or what the scan saw there.
Evidence PlaceEvidence::ofCacheEntry(const LocationRule& rule, const ScanItem& item) const {
  if (item.reasonKey == "reason.cacheTag") return {EvidenceKind::cacheTag};
  const std::size_t depth = componentsOf(locationOf(rule).bytes).size();
  if (const KnownCache* known = knownCache(table_, componentsOf(item.url.path.bytes)[depth])) return known->evidence;
  return {item.reasonKey == "reason.unknownCache" ? EvidenceKind::undocumented : EvidenceKind::none};
}

}  // namespace quorvane
