#include "quorvane/scan/CandidateClassifier.h"

#include "quorvane/base/Utf8.h"
#include "quorvane/core/SensitiveApplicationPolicy.h"
#include "quorvane/scan/CacheDirectoryTag.h"

#include <algorithm>

namespace quorvane {

namespace {

const ItemVerdict unknownCache{SafetyLevel::review, "reason.unknownCache"};

/// Whether any folder that the path names belongs to an application whose files are not to be touched.
bool isSensitive(const FilePath& base, const FilePath& path) {
  return std::ranges::any_of(componentsOf(relativeTo(base, path)), SensitiveApplicationPolicy::isSensitive);
}

bool staysOutForSensitive(LocationKind kind) {
  return kind == LocationKind::cache || kind == LocationKind::anyCache || kind == LocationKind::log;
}

}  // namespace

ScanCandidate CandidateClassifier::candidate(const std::shared_ptr<const FoundFolder>& folder, const LocationRule& rule,
                                             std::string_view name) const {
  ScanCandidate made{.rule = &rule,
                     .folder = folder,
                     .name = std::string(name),
                     .displayName = displayNameOf(rule, name),
                     .category = rule.category,
                     .verdict = {rule.safety, std::string(rule.reasonKey)}};
  if (staysOutForSensitive(rule.kind) && isSensitive(folders_.at(rule.base), made.path()))
    made.verdict = {SafetyLevel::blocked, "reason.sensitiveApplicationProtected"};
  if (isBrowsers(rule, made.path())) made.category = ScanCategory::browserCache;
  return made;
}

/// Programs make their caches again as what they were: a link, say, is a person's.
ScanCandidate CandidateClassifier::cacheEntry(const std::shared_ptr<const FoundFolder>& folder,
                                              const LocationRule& rule, const ListedEntry& entry,
                                              bool isInKnown) const {
  ScanCandidate made = candidate(folder, rule, entry.name);
  if (made.verdict.safety == SafetyLevel::blocked) return made;
  const bool isFile = !entry.isFolder && entry.status.isRegularFile();
  const KnownCache* known = knownCache(table_, entry.name);
  if (known != nullptr) made.category = known->category;
  if ((isInKnown && (entry.isFolder || isFile)) || (known != nullptr && (known->isFile ? isFile : entry.isFolder))) {
    made.verdict = {SafetyLevel::safe, "reason.regenerableCache"};
  } else if (entry.isFolder && isTagged(*folder, entry.name)) {
    made.verdict = {SafetyLevel::safe, "reason.cacheTag"};
    made.isVouchedByTag = true;
  }
  return made;
}

ScanCandidate CandidateClassifier::taggedFolder(const std::shared_ptr<const FoundFolder>& folder,
                                                const LocationRule& rule, std::string_view name, int descriptor) const {
  ScanCandidate made = candidate(folder, rule, name);
  made.isVouchedByTag = true;
  // An environment is tagged by some tools too, but a person may have put more into it than a tool can make again.
  if (fileSystem_.status(descriptor, "pyvenv.cfg")) made.verdict = {SafetyLevel::review, "reason.environment"};
  return made;
}

ScanCandidate CandidateClassifier::itself(const std::shared_ptr<const FoundFolder>& folder, const LocationRule& rule,
                                          std::string_view name, const FileStatus& status) const {
  ScanCandidate made = candidate(folder, rule, name);
  const bool isAsExpected = rule.kind == LocationKind::log ? status.isRegularFile() : status.isFolder();
  if (!isAsExpected && made.verdict.safety == SafetyLevel::safe) made.verdict = unknownCache;
  return made;
}

bool CandidateClassifier::isDisposable(int folder) const {
  return hasCacheDirectoryTag(fileSystem_, folder) && !isWorkingCopy(fileSystem_, folder);
}

std::string CandidateClassifier::displayNameOf(const LocationRule& rule, std::string_view name) const {
  if (rule.subject == LocationSubject::parts) return std::string(rule.name).append(" ").append(name);
  if (rule.subject == LocationSubject::itself && !rule.name.empty()) return std::string(rule.name);
  const bool isPieced =
      rule.kind == LocationKind::cache || rule.kind == LocationKind::log || rule.kind == LocationKind::build;
  if (!table_.showsLastNamePiece || !isPieced) return withReplacedInvalidUtf8(name);
  std::string_view piece = name;
  while (piece.ends_with('.')) piece.remove_suffix(1);
  if (piece.empty()) return withReplacedInvalidUtf8(name);
  return withReplacedInvalidUtf8(piece.substr(piece.rfind('.') + 1));
}

/// Where all entries of a folder are caches, the name tells; where applications have folders of their own, theirs too.
bool CandidateClassifier::isBrowsers(const LocationRule& rule, const FilePath& path) const {
  if (rule.category != ScanCategory::applicationCache) return false;
  const std::string name =
      asciiLowered(rule.kind == LocationKind::cache ? leafOf(path) : relativeTo(folders_.at(rule.base), path));
  return std::ranges::any_of(table_.browserBundleFragments,
                             [&](std::string_view fragment) { return name.contains(fragment); });
}

bool CandidateClassifier::isTagged(const FoundFolder& folder, const std::string& name) const {
  const auto opened = fileSystem_.openFolder(folder.descriptor.number(), name.c_str());
  return opened && isDisposable(opened->number());
}

}  // namespace quorvane
