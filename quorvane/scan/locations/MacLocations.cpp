#include "quorvane/scan/locations/LocationTable.h"

#include <array>

namespace quorvane {

namespace {

using enum ScanCategory;
using enum SafetyLevel;
using enum LocationSubject;
constexpr LocationBase home = LocationBase::home;

constexpr std::array rules{
    LocationRule{ScanStep::caches, applicationCache, home, "Library/Caches", entries, LocationKind::cache, safe,
                 "reason.regenerableCache"},
    LocationRule{ScanStep::logs, logs, home, "Library/Logs", entries, LocationKind::log, safe, "reason.diagnosticLog"},
    LocationRule{ScanStep::developer, developerCache, home, "Library/Developer/Xcode/DerivedData", entries,
                 LocationKind::build, safe, "reason.buildArtifact"},
    LocationRule{ScanStep::developer,
                 developerCache,
                 home,
                 "Library/Developer/Xcode/Archives",
                 entries,
                 LocationKind::archive,
                 review,
                 "reason.archiveMayBeNeeded",
                 {},
                 {},
                 "xcarchive"},
    LocationRule{ScanStep::worktrees, aiWorktree, home, ".codex/worktrees", entries, LocationKind::worktree, review,
                 "reason.aiWorktree"},
    LocationRule{ScanStep::worktrees, aiWorktree, home, ".claude/worktrees", entries, LocationKind::worktree, review,
                 "reason.aiWorktree"},
    LocationRule{ScanStep::worktrees, aiWorktree, home, ".cursor/worktrees", entries, LocationKind::worktree, review,
                 "reason.aiWorktree"},
    LocationRule{ScanStep::installers,
                 installers,
                 LocationBase::downloads,
                 "",
                 files,
                 LocationKind::old,
                 review,
                 "reason.oldInstaller",
                 {},
                 {},
                 "dmg pkg mpkg iso"},
    LocationRule{ScanStep::mailDownloads, mailDownload, home,
                 "Library/Containers/com.apple.mail/Data/Library/Mail Downloads", entries, LocationKind::old, review,
                 "reason.oldMailDownload"},
    LocationRule{ScanStep::deviceBackups, deviceBackup, home, "Library/Application Support/MobileSync/Backup", entries,
                 LocationKind::deviceBackup, blocked, "backup.reason.unknown"},
};

/// The short ones deliberately also catch folders whose names merely contain those letters.
constexpr std::array<std::string_view, 9> browserBundleFragments{
    "google.chrome", "safari", "firefox", "microsoft.edge", "brave", "arc", "opera", "vivaldi", "zen"};

constexpr LocationTable table{rules, {}, browserBundleFragments, /*showsLastNamePiece=*/true};

}  // namespace

const LocationTable& macLocations() { return table; }

}  // namespace quorvane
