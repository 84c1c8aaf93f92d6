#pragma once

#include "quorvane/scan/locations/LocationTable.h"

#include <string_view>

// How the rules of the Linux table are put together. Only that table speaks this language.

namespace quorvane::linuxRules {

using enum ScanCategory;
using enum SafetyLevel;
using enum LocationSubject;
using enum LocationBase;

inline constexpr Evidence standard{EvidenceKind::baseDirectories};
inline constexpr Evidence unknown{EvidenceKind::undocumented};
inline constexpr Evidence logText{EvidenceKind::logFile};

constexpr Evidence standardWith(std::string_view broughtBy) { return {standard.kind, {}, broughtBy}; }

constexpr Evidence says(std::string_view page, std::string_view broughtBy = {}) {
  return {EvidenceKind::ownersWord, page, broughtBy};
}

constexpr Evidence clears(std::string_view command, std::string_view broughtBy = {}) {
  return {EvidenceKind::clearingCommand, command, broughtBy};
}

constexpr Evidence remakes(std::string_view command) { return {EvidenceKind::rebuildCommand, command, command}; }

constexpr LocationRule cacheHome(LocationBase base, std::string_view path) {
  return {.step = ScanStep::caches,
          .category = applicationCache,
          .base = base,
          .path = path,
          .subject = entries,
          .kind = LocationKind::anyCache,
          .safety = review,
          .reasonKey = "reason.unknownCache",
          .evidence = standard};
}

/// Made again by its program.
constexpr LocationRule cacheOf(LocationBase base, std::string_view path, std::string_view name, Evidence evidence) {
  return {.step = ScanStep::caches,
          .category = applicationCache,
          .base = base,
          .path = path,
          .subject = itself,
          .kind = LocationKind::cache,
          .safety = safe,
          .reasonKey = "reason.regenerableCache",
          .name = name,
          .evidence = evidence};
}

constexpr LocationRule logsAt(LocationBase base, std::string_view path, LocationSubject subject,
                              std::string_view name = {}, SafetyLevel safety = safe) {
  return {.step = ScanStep::logs,
          .category = logs,
          .base = base,
          .path = path,
          .subject = subject,
          .kind = LocationKind::log,
          .safety = safety,
          .reasonKey = "reason.diagnosticLog",
          .name = name,
          .evidence = logText};
}

constexpr LocationRule logFilesAt(LocationBase base, std::string_view path, std::string_view name = {}) {
  LocationRule rule = logsAt(base, path, files, name);
  rule.namePart = ".log";
  return rule;
}

/// Fetched again by its package manager when it is wanted.
constexpr LocationRule packages(LocationBase base, std::string_view path, std::string_view name, Evidence evidence) {
  return {.step = ScanStep::developer,
          .category = developerCache,
          .base = base,
          .path = path,
          .subject = itself,
          .kind = LocationKind::build,
          .safety = safe,
          .reasonKey = "reason.packageCache",
          .name = name,
          .evidence = evidence};
}

/// Computed again by the next build.
constexpr LocationRule buildCache(LocationBase base, std::string_view path, std::string_view name, Evidence evidence) {
  LocationRule rule = packages(base, path, name, evidence);
  rule.reasonKey = "reason.buildArtifact";
  return rule;
}

/// The same, of nothing but these entries of the folder.
constexpr LocationRule onlyThe(std::string_view names, LocationRule rule) {
  rule.subject = parts;
  rule.parts = names;
  return rule;
}

constexpr LocationRule forReview(std::string_view reasonKey, LocationRule rule) {
  rule.safety = review;
  rule.reasonKey = reasonKey;
  return rule;
}

/// For review where this entry lies in it.
constexpr LocationRule unlessItHolds(std::string_view entry, std::string_view reasonKey, LocationRule rule) {
  rule.heldBack = {entry, reasonKey};
  return rule;
}

/// Lies among caches and is none.
constexpr LocationRule kept(std::string_view path, std::string_view name, Evidence evidence) {
  return {.step = ScanStep::caches,
          .category = applicationCache,
          .base = cache,
          .path = path,
          .subject = itself,
          .kind = LocationKind::archive,
          .safety = blocked,
          .reasonKey = "reason.ownDataAmongCaches",
          .name = name,
          .evidence = evidence};
}

/// What the browser engine inside an application keeps beside the application's own data: answers of servers, compiled
/// scripts and shaders.
constexpr LocationRule electronIn(LocationBase base, std::string_view path, std::string_view name) {
  return onlyThe("Cache|Code Cache|GPUCache|DawnCache|DawnGraphiteCache|DawnWebGPUCache",
                 cacheOf(base, path, name, says("www.electronjs.org/docs/latest/api/session")));
}

/// What an editor on that engine compiled of its own scripts. It sweeps old ones away itself.
constexpr LocationRule compiledScripts(LocationBase base, std::string_view path, std::string_view name) {
  return cacheOf(base, path, name,
                 says("github.com/microsoft/vscode/blob/main/src/vs/code/electron-utility/sharedProcess/contrib/"
                      "codeCacheCleaner.ts"));
}

/// Archives of the extensions that it installed. It fetches one that is missing.
constexpr LocationRule fetchedExtensions(LocationBase base, std::string_view path, std::string_view name) {
  return cacheOf(
      base, path, name,
      says("github.com/microsoft/vscode/blob/main/src/vs/platform/extensionManagement/node/extensionDownloader.ts"));
}

inline constexpr std::string_view holdsEdits = "reason.localHistory";

/// Of an editor's folders, those with this word in their names; all where there is none.
constexpr LocationRule ideCachesIn(std::string_view path, std::string_view word, std::string_view name,
                                   Evidence evidence) {
  LocationRule rule{.step = ScanStep::developer,
                    .category = developerCache,
                    .base = cache,
                    .path = path,
                    .subject = entries,
                    .kind = LocationKind::build,
                    .safety = safe,
                    .reasonKey = "reason.regenerableCache",
                    .name = name,
                    .evidence = evidence};
  rule.namePart = word;
  return unlessItHolds("LocalHistory", holdsEdits, rule);
}

constexpr LocationRule taggedIn(std::string_view path) {
  return {.step = ScanStep::developer,
          .category = developerCache,
          .base = home,
          .path = path,
          .subject = taggedBelow,
          .kind = LocationKind::build,
          .safety = safe,
          .reasonKey = "reason.cacheTag",
          .evidence = {EvidenceKind::cacheTag}};
}

constexpr LocationRule worktreesIn(std::string_view path, std::string_view name) {
  return {.step = ScanStep::worktrees,
          .category = aiWorktree,
          .base = home,
          .path = path,
          .subject = entries,
          .kind = LocationKind::worktree,
          .safety = review,
          .reasonKey = "reason.aiWorktree",
          .name = name,
          .evidence = {EvidenceKind::repositoryState}};
}

constexpr LocationRule attachmentsIn(LocationBase base, std::string_view path, std::string_view name) {
  return {.step = ScanStep::mailDownloads,
          .category = mailDownload,
          .base = base,
          .path = path,
          .subject = entries,
          .kind = LocationKind::old,
          .safety = review,
          .reasonKey = "reason.oldMailDownload",
          .name = name,
          .evidence = {EvidenceKind::age}};
}

inline constexpr LocationRule oldInstallers{.step = ScanStep::installers,
                                            .category = installers,
                                            .base = downloads,
                                            .path = "",
                                            .subject = files,
                                            .kind = LocationKind::old,
                                            .safety = review,
                                            .reasonKey = "reason.oldInstaller",
                                            .evidence = {EvidenceKind::age},
                                            .extensions = "dmg pkg mpkg iso deb rpm appimage flatpakref run snap"};

inline constexpr std::string_view comesByCommand = "reason.onlyByCommand";
inline constexpr std::string_view isLarge = "reason.costlyDownload";
inline constexpr std::string_view takesLong = "reason.costlyRebuild";
inline constexpr std::string_view isShared = "reason.sharedStore";
inline constexpr std::string_view madeHere = "reason.localRepository";
inline constexpr std::string_view holdsLogins = "reason.mayHoldLogins";
inline constexpr std::string_view keptOffline = "reason.offlineCopies";
inline constexpr std::string_view isUndocumented = "reason.undocumented";

constexpr KnownCache application(std::string_view name, std::string_view program, Evidence evidence = standard) {
  return {name, applicationCache, program, evidence};
}

constexpr KnownCache browser(std::string_view name, std::string_view program, Evidence evidence = standard) {
  return {name, browserCache, program, evidence};
}

constexpr bool isReasoned(SafetyLevel safety, const Evidence& evidence) {
  const EvidenceKind kind = evidence.kind;
  const bool namesSource =
      kind == EvidenceKind::ownersWord || kind == EvidenceKind::clearingCommand || kind == EvidenceKind::rebuildCommand;
  return kind != EvidenceKind::none && namesSource != evidence.source.empty() && (safety != safe || vouches(kind));
}

}  // namespace quorvane::linuxRules
