#include "quorvane/core/IgnoreRuleStore.h"

#include "quorvane/base/Json.h"
#include "quorvane/core/AppPaths.h"
#include "quorvane/core/SupportFolder.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace quorvane {

namespace {

constexpr std::size_t largestFile = std::size_t{4} << 20;

IgnoreRuleFault faultOf(TrustFault fault) {
  switch (fault) {
    case TrustFault::missing:
    case TrustFault::unreadable: return IgnoreRuleFault::unreadable;
    case TrustFault::notRegularFile:
    case TrustFault::foreignOwner:
    case TrustFault::severalLinks:
    case TrustFault::writableByOthers: return IgnoreRuleFault::untrusted;
    case TrustFault::tooLarge: return IgnoreRuleFault::undecodable;
    case TrustFault::busy: return IgnoreRuleFault::busy;
  }
  std::unreachable();
}

/// Of what is made where it is missing.
IgnoreRuleFault faultOfMaking(TrustFault fault) {
  const bool isRefusedBySystem = fault == TrustFault::missing || fault == TrustFault::unreadable;
  if (isRefusedBySystem) return IgnoreRuleFault::notWritten;
  return fault == TrustFault::tooLarge ? IgnoreRuleFault::untrusted : faultOf(fault);
}

/// A rule covers by comparing whole components, which only works for a path in the form that scans compare it with.
bool coversWhatItNames(const IgnoreRule& rule) { return rule.canonicalPath == standardised(rule.canonicalPath); }

bool isNamedBy(const IgnoreRule& rule, std::string_view text) {
  if (uuidFromText(text) == rule.id) return true;
  if (!text.starts_with('/')) return false;
  const FilePath path = standardised({std::string(text)});
  return standardised(rule.path) == path || rule.canonicalPath == path;
}

}  // namespace

std::string messageKey(IgnoreRuleFault fault) { return "ignore.error." + std::string(caseName(fault)); }

IgnoreRuleStore::IgnoreRuleStore(FileSystem& fileSystem, RandomSource& random, const FilePath& applicationSupport)
    : fileSystem_(fileSystem), random_(random), fileURL_(AppPaths::ignoredPaths(applicationSupport)) {}

std::unexpected<IgnoreRuleError> IgnoreRuleStore::refused(IgnoreRuleFault fault, PosixError reason) const {
  return failure(IgnoreRuleError{fault, fileURL_, reason});
}

std::unexpected<IgnoreRuleError> IgnoreRuleStore::refusedFolder(IgnoreRuleFault fault, PosixError reason) const {
  if (fault != IgnoreRuleFault::untrusted) return refused(fault, reason);
  return failure(IgnoreRuleError{IgnoreRuleFault::untrustedFolder, parentOf(fileURL_), reason});
}

Outcome<std::vector<IgnoreRule>, IgnoreRuleError> IgnoreRuleStore::load() {
  const auto folder = openSupportFolder(fileSystem_, parentOf(fileURL_));
  if (folder) return read(folder->number());
  if (folder.error().fault == TrustFault::missing) return std::vector<IgnoreRule>{};
  return refusedFolder(faultOf(folder.error().fault), folder.error().reason);
}

Outcome<IgnoreRule, IgnoreRuleError> IgnoreRuleStore::add(const FilePath& path,
                                                          std::optional<std::string> application) {
  if (!isAbsolute(path.bytes)) return refused(IgnoreRuleFault::invalidPath);
  const auto canonical = fileSystem_.resolved(standardised(path));
  if (!canonical) return refused(IgnoreRuleFault::invalidPath, canonical.error());

  const auto folder = makeSupportFolder(fileSystem_, parentOf(fileURL_));
  if (!folder) return refusedFolder(faultOfMaking(folder.error().fault), folder.error().reason);
  const auto lock = locked(folder->number());
  if (!lock) return failure(lock.error());
  auto rules = read(folder->number());
  if (!rules) return failure(rules.error());
  const auto same = std::ranges::find(*rules, *canonical, &IgnoreRule::canonicalPath);
  if (same != rules->end()) return *same;

  rules->push_back({random_.uuid(), path, *canonical, std::move(application)});
  if (const auto written = write(folder->number(), *rules); !written) return failure(written.error());
  return rules->back();
}

Outcome<IgnoreRule, IgnoreRuleError> IgnoreRuleStore::remove(std::string_view pathOrIdentifier) {
  const auto folder = openSupportFolder(fileSystem_, parentOf(fileURL_));
  if (!folder && folder.error().fault == TrustFault::missing) return refused(IgnoreRuleFault::notFound);
  if (!folder) return refusedFolder(faultOf(folder.error().fault), folder.error().reason);
  const auto lock = locked(folder->number());
  if (!lock) return failure(lock.error());
  auto rules = read(folder->number());
  if (!rules) return failure(rules.error());

  const auto found =
      std::ranges::find_if(*rules, [&](const IgnoreRule& rule) { return isNamedBy(rule, pathOrIdentifier); });
  if (found == rules->end()) return refused(IgnoreRuleFault::notFound);
  IgnoreRule removed = std::move(*found);
  rules->erase(found);
  if (const auto written = write(folder->number(), *rules); !written) return failure(written.error());
  return removed;
}

Outcome<FileDescriptor, IgnoreRuleError> IgnoreRuleStore::locked(int folder) {
  auto lock = lockTrusted(fileSystem_, folder, std::string(AppPaths::ignoredPathsName) + ".lock");
  if (!lock) return refused(faultOfMaking(lock.error().fault), lock.error().reason);
  removeAbandonedTemporaries(fileSystem_, folder, std::string(AppPaths::ignoredPathsName));
  return *std::move(lock);
}

Outcome<std::vector<IgnoreRule>, IgnoreRuleError> IgnoreRuleStore::read(int folder) {
  const auto text = readTrusted(fileSystem_, folder, std::string(AppPaths::ignoredPathsName), largestFile);
  if (!text && text.error().fault == TrustFault::missing) return std::vector<IgnoreRule>{};
  if (!text) return refused(faultOf(text.error().fault), text.error().reason);
  auto rules = recordFromText<std::vector<IgnoreRule>>(*text);
  if (!rules || !std::ranges::all_of(*rules, coversWhatItNames)) return refused(IgnoreRuleFault::undecodable);
  return *std::move(rules);
}

Outcome<void, IgnoreRuleError> IgnoreRuleStore::write(int folder, const std::vector<IgnoreRule>& rules) {
  const std::string text = jsonText(rules);
  if (text.size() > largestFile) return refused(IgnoreRuleFault::notWritten, {EFBIG});
  const auto written = replaceFile(fileSystem_, folder, std::string(AppPaths::ignoredPathsName), text, random_.uuid());
  if (!written) return refused(IgnoreRuleFault::notWritten, written.error());
  return {};
}

}  // namespace quorvane
