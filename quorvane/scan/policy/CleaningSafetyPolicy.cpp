#include "quorvane/scan/policy/CleaningSafetyPolicy.h"

#include "quorvane/scan/policy/PathPattern.h"
#include "quorvane/scan/policy/PathResolver.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace quorvane {

namespace {

constexpr std::size_t fewestComponents = 3;  // below "/"

std::size_t depthOf(const FilePath& path) { return componentsOf(path.bytes).size(); }

FilePath resolvedOrSame(PathResolver& resolver, const FilePath& path) {
  auto resolved = resolver.resolved(path);
  return resolved ? *std::move(resolved) : path;
}

/// Resolves the part of the pattern that is a path: what "*" stands for is resolved with each location.
Outcome<CleaningRoot, PosixError> resolvedRoot(PathResolver& resolver, const CleaningRoot& root) {
  const std::size_t firstOpen = root.pattern.bytes.find("/*");
  const auto base = resolver.resolved(standardised({root.pattern.bytes.substr(0, firstOpen)}));
  if (!base) return failure(base.error());
  if (firstOpen == std::string::npos) return CleaningRoot{*base, root.includesItself};
  return CleaningRoot{joined(*base, root.pattern.bytes.substr(firstOpen + 1)), root.includesItself};
}

CleaningRules resolvedRules(FileSystem& fileSystem, const CleaningRules& rules) {
  PathResolver resolver(fileSystem);
  CleaningRules resolved = rules;
  resolved.home = resolvedOrSame(resolver, rules.home);
  resolved.roots.clear();
  for (const CleaningRoot& root : rules.roots)
    if (auto own = resolvedRoot(resolver, root)) resolved.roots.push_back(*std::move(own));
  // Where a protected folder is a link, the link and its target are protected.
  for (const ProtectedFolder& folder : rules.protectedFolders)
    resolved.protectedFolders.push_back({resolvedOrSame(resolver, folder.path), folder.protection});
  for (GuardedContainer& guarded : resolved.containers)
    guarded = {resolvedOrSame(resolver, guarded.container), resolvedOrSame(resolver, guarded.open)};
  return resolved;
}

/// Whether the location is in the root; the root itself is only where it says so.
bool holds(const CleaningRoot& root, const FilePath& location) {
  if (root.pattern.bytes == "/") return false;
  const PatternMatch match = matched(location, root.pattern);
  return match == PatternMatch::below || (match == PatternMatch::exactly && root.includesItself);
}

bool isClosed(const ProtectedFolder& folder, const FilePath& location, const CleaningRules& rules) {
  if (isAtOrBelow(folder.path, location)) return true;
  if (folder.protection != Protection::everything || !isBelow(location, folder.path)) return false;
  return !(isAtOrBelow(rules.home, folder.path) && isAtOrBelow(location, rules.home));
}

/// Of the roots and the protected folders around a location, the innermost has the say; the protection when both are
/// the same folder.
bool passes(const FilePath& location, const CleaningRules& rules) {
  if (depthOf(location) < fewestComponents) return false;
  std::size_t protectedDepth = 0;
  for (const ProtectedFolder& folder : rules.protectedFolders) {
    if (isClosed(folder, location, rules)) return false;
    if (folder.protection == Protection::content && isBelow(location, folder.path))
      protectedDepth = std::max(protectedDepth, depthOf(folder.path));
  }
  return std::ranges::any_of(rules.roots, [&](const CleaningRoot& root) {
    return holds(root, location) && depthOf(root.pattern) > protectedDepth;
  });
}

}  // namespace

CleaningSafetyPolicy::CleaningSafetyPolicy(FileSystem& fileSystem, CleaningRules rules)
    : fileSystem_(fileSystem), rules_(std::move(rules)), resolvedRules_(resolvedRules(fileSystem, rules_)) {}

bool CleaningSafetyPolicy::allowsCleaning(const FilePath& location) const {
  if (!isAbsolute(location.bytes)) return false;
  const auto resolved = fileSystem_.resolved(standardised(location));
  return resolved && allowsCleaning(location, *resolved);
}

bool CleaningSafetyPolicy::allowsCleaning(const FilePath& location, const FilePath& resolved) const {
  const FilePath given = standardised(location);
  for (std::size_t i = 0; i < rules_.containers.size(); ++i) {
    const GuardedContainer &own = rules_.containers[i], &real = resolvedRules_.containers[i];
    if (isAtOrBelow(given, own.container) || isAtOrBelow(resolved, real.container))
      return isBelow(given, own.open) && isBelow(resolved, real.open);
  }
  if (!passes(resolved, resolvedRules_)) return false;
  // The home may itself be known by a link, or already be resolved in the location: either spelling is its own.
  return !rules_.judgesPathAsGiven || passes(given, rules_) || passes(given, resolvedRules_);
}

}  // namespace quorvane
