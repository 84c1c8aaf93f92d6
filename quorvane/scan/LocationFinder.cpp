#include "quorvane/scan/LocationFinder.h"

#include "quorvane/scan/CalendarDays.h"
#include "quorvane/scan/policy/PathPattern.h"

#include <algorithm>

namespace quorvane {

namespace {

constexpr int daysUntilOld = 30;
constexpr int deepestTag = 3;

}  // namespace

LocationFinder::LocationFinder(FileSystem& fileSystem, const LocationTable& table, const LocationFolders& folders,
                               const ScanScope& scope, Date now)
    : fileSystem_(fileSystem), classifier_(fileSystem, table, folders), folders_(folders), scope_(scope), now_(now) {
  for (const LocationRule& rule : table.rules)
    if (rule.kind != LocationKind::anyCache) claim(rule);
}

void LocationFinder::claim(const LocationRule& rule) {
  const FilePath location = joined(folders_.at(rule.base), rule.path);
  for (const std::string_view part : partsOf(rule)) claims_.push_back(joined(location, part));
  if (rule.subject == LocationSubject::parts) return;
  claims_.push_back(rule.subject == LocationSubject::itself ? location : joined(location, "*"));
}

LocationFindings LocationFinder::find(const LocationRule& rule) {
  LocationFindings findings;
  findings.location.path = joined(folders_.at(rule.base), rule.path);
  findings.location.category = rule.category;
  findings.location.status = ScanCoverageStatus::absent;
  findings.location.reason = ScanCoverageReason::missing;
  if (rule.subject == LocationSubject::itself) {
    findItself(rule, findings);
  } else {
    for (const Folder& folder : expanded(rule, rule.path, findings)) findIn(folder, rule, findings);
  }
  return findings;
}

void LocationFinder::findIn(const Folder& folder, const LocationRule& rule, LocationFindings& findings) {
  if (rule.kind == LocationKind::anyCache) {
    findUnclaimed(folder, rule, /*isKnown=*/false, findings);
  } else if (rule.subject == LocationSubject::taggedBelow) {
    findTagged(folder, rule, 1, findings);
  } else if (rule.subject == LocationSubject::parts) {
    findParts(folder, rule, findings);
  } else {
    findEntries(folder, rule, findings);
  }
}

std::vector<LocationFinder::Folder> LocationFinder::expanded(const LocationRule& rule, std::string_view path,
                                                             LocationFindings& findings) {
  std::vector<Folder> reached;
  if (Folder base = openBase(rule.base, findings)) reached.push_back(std::move(base));
  for (const std::string_view component : componentsOf(path)) {
    std::vector<Folder> next;
    for (const Folder& folder : reached) {
      std::vector<std::string> names;
      if (component != "*") names.emplace_back(component);
      if (component == "*")
        for (ListedEntry& entry : list(folder, findings))
          if (entry.isFolder) names.push_back(std::move(entry.name));
      for (const std::string& name : names)
        if (Folder below = openBelow(folder, name, findings)) next.push_back(std::move(below));
    }
    reached = std::move(next);
  }
  return reached;
}

void LocationFinder::findItself(const LocationRule& rule, LocationFindings& findings) {
  const std::size_t slash = rule.path.rfind('/');
  const bool hasFolder = slash != std::string_view::npos;
  const std::string_view leaf = hasFolder ? rule.path.substr(slash + 1) : rule.path;
  for (const Folder& folder : expanded(rule, hasFolder ? rule.path.substr(0, slash) : "", findings))
    findOne(folder, rule, leaf, findings);
}

void LocationFinder::findParts(const Folder& folder, const LocationRule& rule, LocationFindings& findings) {
  for (const std::string_view part : partsOf(rule)) findOne(folder, rule, part, findings);
}

void LocationFinder::findOne(const Folder& folder, const LocationRule& rule, std::string_view name,
                             LocationFindings& findings) {
  const auto status = fileSystem_.status(folder->descriptor.number(), std::string(name).c_str());
  if (status) {
    findings.noteRead();
    consider(classifier_.itself(folder, rule, name, *status), findings);
  } else {
    findings.noteFailure(status.error(), joined(folder->path, name));
  }
}

void LocationFinder::findEntries(const Folder& folder, const LocationRule& rule, LocationFindings& findings) {
  for (const ListedEntry& entry : list(folder, findings)) {
    if (rule.subject == LocationSubject::files && (entry.isFolder || !entry.status.isRegularFile())) continue;
    if (rule.kind == LocationKind::deviceBackup && !entry.isFolder) continue;
    if (!asksFor(rule, entry.name)) continue;
    if (rule.kind == LocationKind::old && !isOldEnough(folder, entry)) continue;
    consider(classifier_.candidate(folder, rule, entry.name), findings);
  }
}

/// A folder that holds places of other rules is no item: its other entries are.
void LocationFinder::findUnclaimed(const Folder& folder, const LocationRule& rule, bool isKnown,
                                   LocationFindings& findings) {
  const FolderClaims claims = claimsIn(folder->path);
  for (const ListedEntry& entry : list(folder, findings)) {
    const Claim claim = claims.on(entry.name);
    if (claim == Claim::whole) continue;
    ScanCandidate found = classifier_.cacheEntry(folder, rule, entry, isKnown);
    if (claim == Claim::none || !entry.isFolder) {
      consider(std::move(found), findings);
    } else if (const Folder below = openBelow(folder, entry.name, findings)) {
      findUnclaimed(below, rule, found.verdict.safety == SafetyLevel::safe, findings);
    }
  }
}

void LocationFinder::findTagged(const Folder& folder, const LocationRule& rule, int depth, LocationFindings& findings) {
  for (const ListedEntry& entry : list(folder, findings)) {
    if (!entry.isFolder || entry.name == ".git" || entry.name == "node_modules") continue;
    const Folder below = openBelow(folder, entry.name, findings);
    if (!below) continue;
    const int descriptor = below->descriptor.number();
    if (classifier_.isDisposable(descriptor)) {
      consider(classifier_.taggedFolder(folder, rule, entry.name, descriptor), findings);
    } else if (depth < deepestTag && !entry.name.starts_with('.')) {
      findTagged(below, rule, depth + 1, findings);
    }
  }
}

void LocationFinder::consider(ScanCandidate candidate, LocationFindings& findings) {
  std::optional<ScanCoverageReason> reason = scope_.reasonToSkip(candidate.canonicalPath());
  if (!reason && isIgnoredThroughLink(candidate)) reason = ScanCoverageReason::ignored;
  if (!reason && !taken_.take(candidate.canonicalPath())) reason = ScanCoverageReason::overlaps;
  if (!reason) {
    findings.candidates.push_back(std::move(candidate));
    return;
  }
  findings.leaveOut(candidate.path(), candidate.category, *reason);
}

/// A rule for a link names what the link leads to.
bool LocationFinder::isIgnoredThroughLink(const ScanCandidate& candidate) const {
  if (scope_.scanIgnoreRules.empty()) return false;
  const auto status = fileSystem_.status(candidate.folder->descriptor.number(), candidate.name.c_str());
  if (!status || !status->isLink()) return false;
  const auto target = fileSystem_.resolved(candidate.canonicalPath());
  return target && ruleCovering(scope_.scanIgnoreRules, *target) != nullptr;
}

bool LocationFinder::isOldEnough(const Folder& folder, const ListedEntry& entry) const {
  const auto status = entry.isFolder ? fileSystem_.status(folder->descriptor.number(), entry.name.c_str())
                                     : Outcome<FileStatus, PosixError>(entry.status);
  return status && status->modified.date() < calendarDaysBefore(now_, daysUntilOld);
}

LocationFinder::Folder LocationFinder::openBase(LocationBase base, LocationFindings& findings) {
  const auto known = bases_.find(base);
  const auto& opened = known != bases_.end() ? known->second : bases_.emplace(base, openedBase(base)).first->second;
  if (opened) return *opened;
  findings.noteFailure(opened.error(), folders_.at(base));
  return nullptr;
}

Outcome<LocationFinder::Folder, PosixError> LocationFinder::openedBase(LocationBase base) {
  const FilePath& path = folders_.at(base);
  auto descriptor = fileSystem_.openStartingFolder(path);
  if (!descriptor) return failure(descriptor.error());
  auto canonical = fileSystem_.resolved(path);
  if (!canonical) return failure(canonical.error());
  if (!folders_.allows(*canonical)) return failure(linkError());
  return std::make_shared<const FoundFolder>(FoundFolder{*std::move(descriptor), path, *std::move(canonical)});
}

LocationFinder::Folder LocationFinder::openBelow(const Folder& folder, const std::string& name,
                                                 LocationFindings& findings) {
  auto descriptor = fileSystem_.openFolder(folder->descriptor.number(), name.c_str());
  if (descriptor) {
    return std::make_shared<const FoundFolder>(
        FoundFolder{*std::move(descriptor), joined(folder->path, name), joined(folder->canonicalPath, name)});
  }
  findings.noteFailure(descriptor.error(), joined(folder->path, name));
  return nullptr;
}

std::vector<ListedEntry> LocationFinder::list(const Folder& folder, LocationFindings& findings) {
  const auto listed = fileSystem_.list(folder->descriptor.number(), listing_);
  if (listed) {
    findings.noteRead();
  } else {
    findings.noteFailure(listed.error(), folder->path);
  }
  std::vector<ListedEntry> entries;
  for (const FolderEntry& entry : listing_.entries())
    if (entry.error == 0) entries.push_back({std::string(listing_.nameOf(entry)), entry.isFolder, entry.status});
  std::ranges::sort(entries, {}, &ListedEntry::name);
  return entries;
}

/// Looking through all claims once for a folder, not once for each of its entries: a cache home holds thousands.
LocationFinder::FolderClaims LocationFinder::claimsIn(const FilePath& folder) const {
  FolderClaims claims;
  const std::size_t depth = componentsOf(folder.bytes).size();
  for (const FilePath& pattern : claims_) {
    const PatternMatch match = matched(folder, pattern);
    if (match == PatternMatch::exactly || match == PatternMatch::below) claims.each = Claim::whole;
    if (match != PatternMatch::above) continue;
    const std::vector<std::string_view> components = componentsOf(pattern.bytes);
    const Claim claim = components.size() == depth + 1 ? Claim::whole : Claim::inside;
    Claim& known = components[depth] == "*" ? claims.each : claims.named[components[depth]];
    known = std::max(known, claim);
  }
  return claims;
}

LocationFinder::Claim LocationFinder::FolderClaims::on(std::string_view name) const {
  const auto found = named.find(name);
  return found == named.end() ? each : std::max(found->second, each);
}

}  // namespace quorvane
