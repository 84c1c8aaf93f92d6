#include "quorvane/scan/LocationTable.h"

#include <array>

// What a Linux home holds that can be reclaimed. A place is `safe` only when its owner makes it again by itself,
// fetches it again, or marks it with a cache directory tag; whatever is not known is `review`.

namespace quorvane {

namespace {

using enum ScanCategory;
using enum SafetyLevel;
using enum LocationSubject;
using enum LocationBase;

constexpr LocationRule cacheHome(LocationBase base, std::string_view path) {
  return {ScanStep::caches, applicationCache,       base,   path,
          entries,          LocationKind::anyCache, review, "reason.unknownCache"};
}

constexpr LocationRule logsAt(LocationBase base, std::string_view path, LocationSubject subject,
                              SafetyLevel safety = safe) {
  return {ScanStep::logs, logs, base, path, subject, LocationKind::log, safety, "reason.diagnosticLog"};
}

constexpr LocationRule logFilesAt(LocationBase base, std::string_view path) {
  return {ScanStep::logs, logs, base, path, files, LocationKind::log, safe, "reason.diagnosticLog", {}, {}, ".log"};
}

/// Fetched again by its package manager when it is wanted.
constexpr LocationRule packages(LocationBase base, std::string_view path, std::string_view name) {
  return {
      ScanStep::developer, developerCache, base, path, itself, LocationKind::build, safe, "reason.packageCache", name};
}

/// Computed again by the next build.
constexpr LocationRule buildCache(LocationBase base, std::string_view path, std::string_view name) {
  return {
      ScanStep::developer, developerCache, base, path, itself, LocationKind::build, safe, "reason.buildArtifact", name};
}

constexpr LocationRule taggedIn(std::string_view path) {
  return {ScanStep::developer, developerCache, home, path, taggedBelow, LocationKind::build, safe, "reason.cacheTag"};
}

constexpr LocationRule worktreesIn(std::string_view path) {
  return {ScanStep::worktrees, aiWorktree, home, path, entries, LocationKind::worktree, review, "reason.aiWorktree"};
}

constexpr LocationRule attachmentsIn(LocationBase base, std::string_view path) {
  return {ScanStep::mailDownloads, mailDownload, base, path, entries, LocationKind::old, review,
          "reason.oldMailDownload"};
}

constexpr std::array rules{
    cacheHome(cache, ""),
    cacheHome(home, ".var/app/*/cache"),
    cacheHome(home, "snap/*/common/.cache"),

    logFilesAt(state, ""),
    logFilesAt(state, "*"),
    logsAt(state, "*/log", entries),
    logsAt(state, "*/logs", entries),
    logFilesAt(data, "xorg"),
    logsAt(home, ".xsession-errors", itself),
    logsAt(home, ".xsession-errors.old", itself),
    logsAt(home, ".npm/_logs", entries),
    logsAt(data, "*/logs", entries, review),
    logsAt(configuration, "*/logs", entries, review),

    packages(cache, "pip", "pip"),
    packages(cache, "uv", "uv"),
    packages(cache, "pypoetry/artifacts", "poetry artifacts"),
    packages(cache, "pypoetry/cache", "poetry cache"),
    packages(cache, "pipenv", "pipenv"),
    packages(cache, "pdm", "pdm"),
    packages(cache, "hatch", "hatch"),
    packages(home, ".conda/pkgs", "conda"),
    packages(home, ".npm/_cacache", "npm"),
    packages(home, ".npm/_npx", "npx"),
    packages(cache, "yarn", "yarn"),
    packages(home, ".yarn/berry/cache", "yarn berry"),
    packages(cache, "pnpm", "pnpm cache"),
    packages(data, "pnpm/store", "pnpm store"),
    packages(home, ".bun/install/cache", "bun"),
    packages(cache, "deno", "deno"),
    packages(cache, "node-gyp", "node-gyp"),
    packages(cache, "electron", "electron"),
    packages(cache, "electron-builder", "electron-builder"),
    packages(cache, "ms-playwright", "playwright browsers"),
    packages(cache, "puppeteer", "puppeteer browsers"),
    packages(cache, "Cypress", "cypress"),
    packages(cache, "typescript", "typescript types"),
    packages(home, ".cargo/registry/cache", "cargo registry"),
    packages(home, ".cargo/registry/src", "cargo sources"),
    packages(home, ".cargo/git/checkouts", "cargo git checkouts"),
    packages(home, "go/pkg/mod", "go modules"),
    buildCache(cache, "go-build", "go build"),
    buildCache(cache, "golangci-lint", "golangci-lint"),
    buildCache(cache, "gopls", "gopls"),
    buildCache(cache, "goimports", "goimports"),
    buildCache(cache, "ccache", "ccache"),
    buildCache(home, ".ccache", "ccache"),
    buildCache(cache, "sccache", "sccache"),
    buildCache(cache, "bazel", "bazel"),
    packages(cache, "bazelisk", "bazelisk"),
    buildCache(cache, "zig", "zig"),
    buildCache(cache, "mypy", "mypy"),
    buildCache(cache, "pylint", "pylint"),
    buildCache(cache, "black", "black"),
    buildCache(cache, "pre-commit", "pre-commit"),
    packages(home, ".gradle/caches", "gradle caches"),
    packages(home, ".gradle/wrapper/dists", "gradle distributions"),
    packages(home, ".ivy2/cache", "ivy"),
    packages(cache, "coursier", "coursier"),
    packages(home, ".nuget/packages", "nuget"),
    packages(cache, "composer", "composer"),
    packages(home, ".composer/cache", "composer"),
    packages(cache, "vcpkg/archives", "vcpkg"),
    packages(home, ".hex/packages", "hex"),
    packages(home, ".stack/pkgs", "stack"),
    packages(home, ".cabal/packages", "cabal"),
    packages(home, ".opam/download-cache", "opam"),
    packages(home, ".pub-cache/hosted", "pub"),
    LocationRule{ScanStep::developer, developerCache, cache, "JetBrains", entries, LocationKind::ideCache, safe,
                 "reason.regenerableCache"},
    // Holds what was installed from the user's own projects too, which nobody can fetch again.
    LocationRule{ScanStep::developer, developerCache, home, ".m2/repository", itself, LocationKind::build, review,
                 "reason.localRepository", "maven repository"},
    taggedIn("projects"),
    taggedIn("Projects"),
    taggedIn("src"),
    taggedIn("code"),
    taggedIn("Code"),
    taggedIn("dev"),
    taggedIn("git"),
    taggedIn("repos"),
    taggedIn("workspace"),
    taggedIn("Developer"),

    worktreesIn(".codex/worktrees"),
    worktreesIn(".claude/worktrees"),
    worktreesIn(".cursor/worktrees"),

    LocationRule{ScanStep::installers,
                 installers,
                 downloads,
                 "",
                 files,
                 LocationKind::old,
                 review,
                 "reason.oldInstaller",
                 {},
                 "dmg pkg mpkg iso deb rpm appimage flatpakref run snap"},

    attachmentsIn(configuration, "Mailspring/files"),
    attachmentsIn(home, ".var/app/com.getmailspring.Mailspring/config/Mailspring/files"),
    attachmentsIn(home, ".claws-mail/mimetmp"),
    attachmentsIn(home, ".sylpheed-2.0/mimetmp"),
    attachmentsIn(cache, "evolution/tmp"),
    attachmentsIn(data, "geary/*/attachments"),
    attachmentsIn(home, ".var/app/org.gnome.Geary/data/geary/*/attachments"),
    attachmentsIn(home, ".thunderbird/*/Attachments"),
};

constexpr std::array knownCaches{
    KnownCache{"babl", applicationCache},
    KnownCache{"evolution", applicationCache},
    KnownCache{"flatpak", applicationCache},
    KnownCache{"fontconfig", applicationCache},
    KnownCache{"gegl-0.4", applicationCache},
    KnownCache{"gnome-software", applicationCache},
    KnownCache{"gstreamer-1.0", applicationCache},
    KnownCache{"icon-cache.kcache", applicationCache, /*isFile=*/true},
    KnownCache{"mesa_shader_cache", applicationCache},
    KnownCache{"mesa_shader_cache_db", applicationCache},
    KnownCache{"nvidia", applicationCache},
    KnownCache{"nv", applicationCache},
    KnownCache{"radv_builtin_shaders64", applicationCache},
    KnownCache{"shotwell", applicationCache},
    KnownCache{"spotify", applicationCache},
    KnownCache{"thumbnails", applicationCache},
    KnownCache{"thunderbird", applicationCache},
    KnownCache{"vlc", applicationCache},
    KnownCache{"bravesoftware", browserCache},
    KnownCache{"chromium", browserCache},
    KnownCache{"epiphany", browserCache},
    KnownCache{"falkon", browserCache},
    KnownCache{"google-chrome", browserCache},
    KnownCache{"google-chrome-beta", browserCache},
    KnownCache{"google-chrome-unstable", browserCache},
    KnownCache{"librewolf", browserCache},
    KnownCache{"microsoft-edge", browserCache},
    KnownCache{"mozilla", browserCache},
    KnownCache{"opera", browserCache},
    KnownCache{"qutebrowser", browserCache},
    KnownCache{"vivaldi", browserCache},
    KnownCache{"waterfox", browserCache},
    KnownCache{"zen", browserCache},
};

constexpr std::array<std::string_view, 17> browserBundleFragments{
    "google-chrome",  "googlechrome", "chromium",    "mozilla",    "firefox",    "microsoft-edge",
    "microsoft.edge", "brave",        "opera",       "vivaldi",    "librewolf",  "waterfox",
    "epiphany",       "falkon",       "qutebrowser", "torbrowser", "zen_browser"};

constexpr LocationTable table{rules, knownCaches, browserBundleFragments, /*showsLastNamePiece=*/false};

}  // namespace

const LocationTable& linuxLocations() { return table; }

}  // namespace quorvane
