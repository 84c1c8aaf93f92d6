#include "quorvane/scan/LocationFinder.h"

#include "quorvane/base/Utf8.h"
#include "quorvane/core/SensitiveApplicationPolicy.h"
#include "quorvane/scan/CacheDirectoryTag.h"
#include "quorvane/scan/CalendarDays.h"
#include "quorvane/scan/PathPattern.h"

#include <algorithm>
#include <cerrno>

namespace quorvane {

namespace {

constexpr int daysUntilOld = 30;
constexpr int deepestTag = 3;

bool isOneOf(std::string_view words, std::string_view word) {
  while (!words.empty()) {
    const std::size_t blank = words.find(' ');
    if (words.substr(0, blank) == word) return true;
    words.remove_prefix(blank == std::string_view::npos ? words.size() : blank + 1);
  }
  return false;
}

/// Whether the part stands in the name and no letter right behind it: ".log" in "a.log.1", not in "a.login".
bool holdsWord(std::string_view name, std::string_view part) {
  const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
  for (std::size_t at = name.find(part); at != std::string_view::npos; at = name.find(part, at + 1))
    if (at + part.size() == name.size() || !isLetter(name[at + part.size()])) return true;
  return false;
}

bool isAskedFor(const LocationRule& rule, std::string_view name) {
  if (!rule.namePart.empty() && !holdsWord(name, rule.namePart)) return false;
  return rule.extensions.empty() || isOneOf(rule.extensions, asciiLowered(extensionOf(name)));
}

/// Whether any folder that the path names belongs to an application whose files are not to be touched.
bool isSensitive(const FilePath& base, const FilePath& path) {
  return std::ranges::any_of(componentsOf(relativeTo(base, path)), SensitiveApplicationPolicy::isSensitive);
}

bool staysOutForSensitive(LocationKind kind) {
  return kind == LocationKind::cache || kind == LocationKind::anyCache || kind == LocationKind::log;
}

/// What an error of opening or listing a folder says about the place.
ScanCoverageReason reasonOf(PosixError error) {
  switch (error.code) {
    case ELOOP: return ScanCoverageReason::link;
    case ENOTDIR: return ScanCoverageReason::notAFolder;
    case EACCES:
    case EPERM: return ScanCoverageReason::permissionDenied;
    default: return ScanCoverageReason::failed;
  }
}

ScanCoverageEntry leftOutEntry(const FilePath& path, ScanCategory category, ScanCoverageReason reason) {
  return {.path = path,
          .category = category,
          .status = ScanCoverageStatus::skipped,
          .reason = reason,
          .itemCount = 0,
          .unreadablePaths = {},
          .notes = {}};
}

}  // namespace

LocationFinder::LocationFinder(FileSystem& fileSystem, const LocationTable& table, const LocationFolders& folders,
                               const ScanScope& scope, Date now)
    : fileSystem_(fileSystem), table_(table), folders_(folders), scope_(scope), now_(now) {
  for (const LocationRule& rule : table.rules) {
    if (rule.kind == LocationKind::anyCache) continue;
    FilePath pattern = joined(folders.at(rule.base), rule.path);
    if (rule.subject != LocationSubject::itself) pattern = joined(pattern, "*");
    claims_.push_back(std::move(pattern));
  }
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
        for (Listed& entry : list(folder, findings))
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
  for (const Folder& folder : expanded(rule, hasFolder ? rule.path.substr(0, slash) : "", findings)) {
    const auto status = fileSystem_.status(folder->descriptor.number(), std::string(leaf).c_str());
    if (status) {
      noteRead(findings);
      ScanCandidate found = candidate(folder, rule, leaf);
      const bool isAsExpected = rule.kind == LocationKind::log ? status->isRegularFile() : status->isFolder();
      if (!isAsExpected && found.safety == SafetyLevel::safe) doubt(found);
      consider(std::move(found), findings);
    } else {
      noteFailure(status.error(), joined(folder->path, leaf), findings);
    }
  }
}

void LocationFinder::findEntries(const Folder& folder, const LocationRule& rule, LocationFindings& findings) {
  for (const Listed& entry : list(folder, findings)) {
    if (rule.subject == LocationSubject::files && (entry.isFolder || !entry.status.isRegularFile())) continue;
    if (rule.kind == LocationKind::deviceBackup && !entry.isFolder) continue;
    if (!isAskedFor(rule, entry.name)) continue;
    if (rule.kind == LocationKind::old && !isOldEnough(folder, entry)) continue;
    consider(candidate(folder, rule, entry.name), findings);
  }
}

/// A folder that holds places of other rules is no item: its other entries are.
void LocationFinder::findUnclaimed(const Folder& folder, const LocationRule& rule, bool isKnown,
                                   LocationFindings& findings) {
  for (const Listed& entry : list(folder, findings)) {
    ScanCandidate found = candidate(folder, rule, entry.name);
    const Claim claim = claimOn(found.path());
    if (claim == Claim::whole) continue;
    classifyCache(found, entry, isKnown);
    if (claim == Claim::none || !entry.isFolder) {
      consider(std::move(found), findings);
    } else if (const Folder below = openBelow(folder, entry.name, findings)) {
      findUnclaimed(below, rule, found.safety == SafetyLevel::safe, findings);
    }
  }
}

void LocationFinder::findTagged(const Folder& folder, const LocationRule& rule, int depth, LocationFindings& findings) {
  for (const Listed& entry : list(folder, findings)) {
    if (!entry.isFolder || entry.name == ".git" || entry.name == "node_modules") continue;
    const Folder below = openBelow(folder, entry.name, findings);
    if (!below) continue;
    if (isDisposable(below->descriptor.number())) {
      ScanCandidate found = candidate(folder, rule, entry.name);
      // An environment is tagged by some tools too, but a person may have put more into it than a tool can make again.
      if (fileSystem_.status(below->descriptor.number(), "pyvenv.cfg")) {
        found.safety = SafetyLevel::review;
        found.reasonKey = "reason.environment";
      }
      consider(std::move(found), findings);
    } else if (depth < deepestTag && !entry.name.starts_with('.')) {
      findTagged(below, rule, depth + 1, findings);
    }
  }
}

/// A location stands for one folder or, with "*" in its path, for many: one that failed does not speak for the others.
void LocationFinder::noteFailure(PosixError error, const FilePath& path, LocationFindings& findings) const {
  if (error.isMissing()) return;
  ScanCoverageEntry& location = findings.location;
  const ScanCoverageReason reason = reasonOf(error);
  const bool isPassedOver = reason == ScanCoverageReason::link || reason == ScanCoverageReason::notAFolder;
  if (!isPassedOver) location.unreadablePaths.push_back(path);
  if (isPassedOver && (findings.wasRead || location.path.bytes.contains('*'))) {
    findings.leftOut.push_back(leftOutEntry(path, location.category, reason));
  } else if (findings.wasRead) {
    location.status = ScanCoverageStatus::partial;
    location.reason = reason;
  } else {
    location.status = isPassedOver ? ScanCoverageStatus::skipped : ScanCoverageStatus::unreadable;
    location.reason = reason;
  }
}

void LocationFinder::noteRead(LocationFindings& findings) const {
  ScanCoverageEntry& location = findings.location;
  if (!findings.wasRead && location.unreadablePaths.empty()) {
    location.status = ScanCoverageStatus::complete;
    location.reason = ScanCoverageReason::read;
  } else if (location.status == ScanCoverageStatus::unreadable) {
    location.status = ScanCoverageStatus::partial;
  }
  findings.wasRead = true;
}

void LocationFinder::consider(ScanCandidate candidate, LocationFindings& findings) {
  std::optional<ScanCoverageReason> reason = scope_.reasonToSkip(candidate.canonicalPath());
  if (!reason && isIgnoredThroughLink(candidate)) reason = ScanCoverageReason::ignored;
  if (!reason && !taken_.take(candidate.canonicalPath())) reason = ScanCoverageReason::overlaps;
  if (!reason) {
    findings.candidates.push_back(std::move(candidate));
    return;
  }
  findings.leftOut.push_back(leftOutEntry(candidate.path(), candidate.category, *reason));
}

/// A rule for a link names what the link leads to.
bool LocationFinder::isIgnoredThroughLink(const ScanCandidate& candidate) const {
  if (scope_.scanIgnoreRules.empty()) return false;
  const auto status = fileSystem_.status(candidate.folder->descriptor.number(), candidate.name.c_str());
  if (!status || !status->isLink()) return false;
  const auto target = fileSystem_.resolved(candidate.canonicalPath());
  return target && ruleCovering(scope_.scanIgnoreRules, *target) != nullptr;
}

ScanCandidate LocationFinder::candidate(const Folder& folder, const LocationRule& rule, std::string_view name) const {
  ScanCandidate made{.rule = &rule,
                     .folder = folder,
                     .name = std::string(name),
                     .displayName = displayNameOf(rule, name),
                     .category = rule.category,
                     .safety = rule.safety,
                     .reasonKey = std::string(rule.reasonKey)};
  if (staysOutForSensitive(rule.kind) && isSensitive(folders_.at(rule.base), made.path())) {
    made.safety = SafetyLevel::blocked;
    made.reasonKey = "reason.sensitiveApplicationProtected";
  }
  const std::string lowered = asciiLowered(relativeTo(folders_.at(rule.base), made.path()));
  const std::string_view shown = rule.kind == LocationKind::cache
                                     ? std::string_view(lowered).substr(lowered.rfind('/') + 1)
                                     : std::string_view(lowered);
  const auto names = [&](std::string_view fragment) { return shown.contains(fragment); };
  if (rule.category == ScanCategory::applicationCache && std::ranges::any_of(table_.browserBundleFragments, names))
    made.category = ScanCategory::browserCache;
  return made;
}

std::string LocationFinder::displayNameOf(const LocationRule& rule, std::string_view name) const {
  if (!rule.name.empty()) return std::string(rule.name);
  const bool isPieced =
      rule.kind == LocationKind::cache || rule.kind == LocationKind::log || rule.kind == LocationKind::build;
  if (!table_.showsLastNamePiece || !isPieced) return withReplacedInvalidUtf8(name);
  std::string_view piece = name;
  while (piece.ends_with('.')) piece.remove_suffix(1);
  if (piece.empty()) return withReplacedInvalidUtf8(name);
  return withReplacedInvalidUtf8(piece.substr(piece.rfind('.') + 1));
}

/// Programs make their caches again as what they were: a link, say, is a person's.
void LocationFinder::classifyCache(ScanCandidate& candidate, const Listed& entry, bool isKnown) const {
  if (candidate.safety == SafetyLevel::blocked) return;
  const bool isFile = !entry.isFolder && entry.status.isRegularFile();
  const auto known = std::ranges::find(table_.knownCaches, asciiLowered(candidate.name), &KnownCache::name);
  const bool isListed = known != table_.knownCaches.end();
  if (isListed) candidate.category = known->category;
  if ((isKnown && (entry.isFolder || isFile)) || (isListed && (known->isFile ? isFile : entry.isFolder))) {
    candidate.safety = SafetyLevel::safe;
    candidate.reasonKey = "reason.regenerableCache";
  } else if (entry.isFolder && isTagged(candidate.folder, candidate.name)) {
    candidate.safety = SafetyLevel::safe;
    candidate.reasonKey = "reason.cacheTag";
  }
}

void LocationFinder::doubt(ScanCandidate& candidate) {
  candidate.safety = SafetyLevel::review;
  candidate.reasonKey = "reason.unknownCache";
}

bool LocationFinder::isTagged(const Folder& folder, const std::string& name) const {
  const auto opened = fileSystem_.openFolder(folder->descriptor.number(), name.c_str());
  return opened && isDisposable(opened->number());
}

bool LocationFinder::isDisposable(int folder) const {
  return hasCacheDirectoryTag(fileSystem_, folder) && !isWorkingCopy(fileSystem_, folder);
}

bool LocationFinder::isOldEnough(const Folder& folder, const Listed& entry) const {
  const auto status = entry.isFolder ? fileSystem_.status(folder->descriptor.number(), entry.name.c_str())
                                     : Outcome<FileStatus, PosixError>(entry.status);
  return status && status->modified.date() < calendarDaysBefore(now_, daysUntilOld);
}

LocationFinder::Folder LocationFinder::openBase(LocationBase base, LocationFindings& findings) {
  const FilePath& path = folders_.at(base);
  auto descriptor = fileSystem_.openStartingFolder(path);
  const auto canonical = fileSystem_.resolved(path);
  if (!descriptor || !canonical) {
    noteFailure(descriptor ? canonical.error() : descriptor.error(), path, findings);
  } else if (!folders_.allows(*canonical)) {
    noteFailure(PosixError{ELOOP}, path, findings);
  } else {
    return std::make_shared<const FoundFolder>(FoundFolder{*std::move(descriptor), path, *canonical});
  }
  return nullptr;
}

LocationFinder::Folder LocationFinder::openBelow(const Folder& folder, const std::string& name,
                                                 LocationFindings& findings) {
  auto descriptor = fileSystem_.openFolder(folder->descriptor.number(), name.c_str());
  if (descriptor) {
    return std::make_shared<const FoundFolder>(
        FoundFolder{*std::move(descriptor), joined(folder->path, name), joined(folder->canonicalPath, name)});
  }
  PosixError error = descriptor.error();
  const auto status = fileSystem_.status(folder->descriptor.number(), name.c_str());
  if (error.code == ENOTDIR && status && status->isLink()) error.code = ELOOP;  // which of the two it says differs
  noteFailure(error, joined(folder->path, name), findings);
  return nullptr;
}

std::vector<LocationFinder::Listed> LocationFinder::list(const Folder& folder, LocationFindings& findings) {
  const auto listed = fileSystem_.list(folder->descriptor.number(), listing_);
  if (listed) {
    noteRead(findings);
  } else {
    noteFailure(listed.error(), folder->path, findings);
  }
  std::vector<Listed> entries;
  for (const FolderEntry& entry : listing_.entries())
    if (entry.error == 0) entries.push_back({std::string(listing_.nameOf(entry)), entry.isFolder, entry.status});
  std::ranges::sort(entries, {}, &Listed::name);
  return entries;
}

LocationFinder::Claim LocationFinder::claimOn(const FilePath& path) const {
  Claim claim = Claim::none;
  for (const FilePath& pattern : claims_) {
    const PatternMatch match = matched(path, pattern);
    if (match == PatternMatch::exactly || match == PatternMatch::below) return Claim::whole;
    if (match == PatternMatch::above) claim = Claim::inside;
  }
  return claim;
}

}  // namespace quorvane
