// Every rule of the Linux table that names a program, on real folders: what it makes of its place, and what it leaves
// alone.
#include "quorvane/scan/LocationTable.h"
#include "quorvane/scan/PathPattern.h"
#include "tests/support/ScanHome.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorvane {
namespace {

using namespace std::chrono_literals;

/// An item that has to be found. A path that ends with "/" is a folder with a file in it, any other one is a file.
struct Expected {
  std::string_view path;
  std::string_view name;
  std::string_view verdict;  ///< the level and the reason, without its family
};

constexpr std::string_view again = "safe regenerableCache";
constexpr std::string_view fetched = "safe packageCache";
constexpr std::string_view built = "safe buildArtifact";

constexpr Expected applicationCaches[] = {
    {".cache/babl/", "babl", again},
    {".cache/flatpak/", "flatpak", again},
    {".cache/fontconfig/", "fontconfig", again},
    {".cache/gegl-0.4/", "gegl-0.4", again},
    {".cache/gnome-software/", "gnome-software", again},
    {".cache/gstreamer-1.0/", "gstreamer-1.0", again},
    {".cache/icon-cache.kcache", "icon-cache.kcache", again},
    {".cache/mesa_shader_cache/", "mesa_shader_cache", again},
    {".cache/mesa_shader_cache_db/", "mesa_shader_cache_db", again},
    {".cache/nvidia/", "nvidia", again},
    {".cache/radv_builtin_shaders64/", "radv_builtin_shaders64", again},
    {".cache/shotwell/", "shotwell", again},
    {".cache/thumbnails/", "thumbnails", again},
    {".cache/thunderbird/", "thunderbird", again},
    {".cache/vlc/", "vlc", again},
    {".nv/GLCache/", "NVIDIA GLCache", again},
    {".nv/ComputeCache/", "NVIDIA ComputeCache", again},
    {".cache/godot/", "Godot editor", again},
    {".cache/nvim/", "Neovim", again},
    {".cache/wine/", "Wine Mono and Gecko", again},
    {".cache/yt-dlp/", "yt-dlp", again},
    {".cache/spotify/", "Spotify", "review offlineCopies"},
    {".var/app/com.spotify.Client/cache/spotify/", "Spotify (Flatpak)", "review offlineCopies"},
    {"snap/spotify/common/.cache/spotify/", "Spotify (Snap)", "review offlineCopies"},
    {".cache/evolution/mail/", "Evolution mail", "review offlineCopies"},
    {".cache/evolution/calendar/", "Evolution calendar", "review offlineCopies"},
    {".cache/tracker3/", "file index (Tracker)", "review costlyRebuild"},
    {".local/share/Steam/steamapps/shadercache/", "Steam shaders", "review costlyRebuild"},
    {".local/share/TelegramDesktop/tdata/user_data/cache/", "Telegram cache", "review undocumented"},
    {".local/share/TelegramDesktop/tdata/user_data/media_cache/", "Telegram media_cache", "review undocumented"},
    {".config/Element/Cache/", "Element Cache", again},
    {".config/GitHub Desktop/Code Cache/", "GitHub Desktop Code Cache", again},
    {".config/Joplin/GPUCache/", "Joplin GPUCache", again},
    {".config/Mattermost/DawnCache/", "Mattermost DawnCache", again},
    {".config/Postman/DawnGraphiteCache/", "Postman DawnGraphiteCache", again},
    {".config/Slack/Cache/", "Slack Cache", again},
    {".config/Slack/Code Cache/", "Slack Code Cache", again},
    {".config/Slack/GPUCache/", "Slack GPUCache", again},
    {".config/discord/DawnWebGPUCache/", "Discord DawnWebGPUCache", again},
    {".config/discordcanary/Cache/", "Discord Canary Cache", again},
    {".config/discordptb/Cache/", "Discord PTB Cache", again},
    {".config/heroic/Cache/", "Heroic Cache", again},
    {".config/obsidian/Cache/", "Obsidian Cache", again},
    {".config/teams-for-linux/Cache/", "Teams for Linux Cache", again},
    {".var/app/com.discordapp.Discord/config/discord/Cache/", "Discord (Flatpak) Cache", again},
    {".var/app/com.mattermost.Desktop/config/Mattermost/Cache/", "Mattermost (Flatpak) Cache", again},
    {".var/app/com.slack.Slack/config/Slack/Code Cache/", "Slack (Flatpak) Code Cache", again},
    {".var/app/im.riot.Riot/config/Element/Cache/", "Element (Flatpak) Cache", again},
    {".var/app/md.obsidian.Obsidian/config/obsidian/Cache/", "Obsidian (Flatpak) Cache", again},
    {".config/Code/CachedData/", "VS Code CachedData", again},
    {".config/Code/CachedExtensionVSIXs/", "VS Code CachedExtensionVSIXs", again},
    {".config/Code - Insiders/CachedData/", "VS Code Insiders CachedData", again},
    {".config/Cursor/Code Cache/", "Cursor Code Cache", again},
    {".config/VSCodium/Cache/", "VSCodium Cache", again},
    {".var/app/com.visualstudio.code/config/Code/CachedData/", "VS Code (Flatpak) CachedData", again},
    {".var/app/com.vscodium.codium/config/VSCodium/GPUCache/", "VSCodium (Flatpak) GPUCache", again},
    // Lie in a folder of caches, and are none.
    {".cache/deno/location_data/", "Deno local storage", "blocked ownDataAmongCaches"},
    {".cache/huggingface/token", "Hugging Face login", "blocked ownDataAmongCaches"},
    {".cache/huggingface/stored_tokens", "Hugging Face logins", "blocked ownDataAmongCaches"},
    // What no rule names beside what one does.
    {".cache/pypoetry/virtualenvs/", "virtualenvs", "review unknownCache"},
    {".cache/coursier/jvm/", "jvm", "review unknownCache"},
    {".cache/evolution/sources/", "sources", "review unknownCache"},
    {".cache/R/other/", "other", "review unknownCache"},
};

constexpr Expected browserCaches[] = {
    {".cache/BraveSoftware/", "BraveSoftware", again},
    {".cache/chromium/", "chromium", again},
    {".cache/epiphany/", "epiphany", again},
    {".cache/falkon/", "falkon", again},
    {".cache/google-chrome/", "google-chrome", again},
    {".cache/google-chrome-beta/", "google-chrome-beta", again},
    {".cache/google-chrome-unstable/", "google-chrome-unstable", again},
    {".cache/librewolf/", "librewolf", again},
    {".cache/microsoft-edge/", "microsoft-edge", again},
    {".cache/microsoft-edge-beta/", "microsoft-edge-beta", again},
    {".cache/microsoft-edge-dev/", "microsoft-edge-dev", again},
    {".cache/mozilla/", "mozilla", again},
    {".cache/opera/", "opera", again},
    {".cache/qutebrowser/", "qutebrowser", again},
    {".cache/vivaldi/", "vivaldi", again},
    {".cache/vivaldi-snapshot/", "vivaldi-snapshot", again},
    {".cache/waterfox/", "waterfox", again},
    {".cache/zen/", "zen", again},
    {".var/app/org.mozilla.firefox/cache/mozilla/", "mozilla", again},
    {".var/app/com.google.Chrome/cache/google-chrome/", "google-chrome", again},
    {"snap/firefox/common/.cache/mozilla/", "mozilla", again},
    {"snap/chromium/common/.cache/chromium/", "chromium", again},
};

constexpr Expected developerCaches[] = {
    {".cache/pip/", "pip", fetched},
    {".cache/uv/", "uv", fetched},
    {".cache/pypoetry/artifacts/", "poetry artifacts", fetched},
    {".cache/pypoetry/cache/", "poetry cache", fetched},
    {".cache/pipenv/", "pipenv", fetched},
    {".cache/pdm/", "pdm", fetched},
    {".cache/hatch/", "hatch", fetched},
    {".local/share/virtualenv/", "virtualenv", fetched},
    {".conda/pkgs/", "conda", "review sharedStore"},
    {".cache/black/", "black", built},
    {".cache/jedi/", "jedi", built},
    {".cache/matplotlib/", "matplotlib", built},
    {".cache/parso/", "parso", built},
    {".cache/pre-commit/", "pre-commit", built},
    {".cache/pylint/", "pylint", built},
    {".ansible/tmp/", "Ansible tmp", built},
    {".ansible/galaxy_cache/", "Ansible galaxy_cache", built},
    {".cache/huggingface/hub/", "Hugging Face hub", "review costlyDownload"},
    {".cache/huggingface/datasets/", "Hugging Face datasets", "review costlyDownload"},
    {".keras/models/", "Keras models", "review costlyDownload"},
    {".cache/torch/hub/", "PyTorch hub", "review costlyDownload"},
    {".cache/whisper/", "Whisper models", "review costlyDownload"},
    {".npm/_cacache/", "npm", fetched},
    {".npm/_npx/", "npx", fetched},
    {".cache/yarn/", "yarn", fetched},
    {".yarn/berry/cache/", "yarn berry", "review sharedStore"},
    {".cache/pnpm/", "pnpm cache", fetched},
    {".local/share/pnpm/store/", "pnpm store", "review sharedStore"},
    {".bun/install/cache/", "bun", fetched},
    {".cache/deno/gen/", "deno gen", fetched},
    {".cache/deno/npm/", "deno npm", fetched},
    {".cache/node/corepack/", "corepack", fetched},
    {".nvm/.cache/", "nvm", fetched},
    {".cache/node-gyp/", "node-gyp", fetched},
    {".cache/electron/", "electron", fetched},
    {".cache/electron-builder/", "electron-builder", fetched},
    {".cache/typescript/", "typescript types", fetched},
    {".cache/ms-playwright/", "playwright browsers", "review onlyByCommand"},
    {".cache/puppeteer/", "puppeteer browsers", "review onlyByCommand"},
    {".cache/Cypress/", "cypress", "review onlyByCommand"},
    {".cargo/registry/cache/", "cargo registry", fetched},
    {".cargo/registry/index/", "cargo index", fetched},
    {".cargo/registry/src/", "cargo sources", fetched},
    {".cargo/git/checkouts/", "cargo git checkouts", fetched},
    {".cargo/git/db/", "cargo git repositories", fetched},
    {".rustup/downloads/", "rustup downloads", fetched},
    {".rustup/tmp/", "rustup tmp", fetched},
    {"go/pkg/mod/", "go modules", fetched},
    {".cache/go-build/", "go build", built},
    {".cache/golangci-lint/", "golangci-lint", built},
    {".cache/gopls/", "gopls", built},
    {".cache/goimports/", "goimports", built},
    {".cache/ccache/", "ccache", built},
    {".cache/sccache/", "sccache", built},
    {".cache/bazel/", "bazel", built},
    {".cache/bazelisk/", "bazelisk", fetched},
    {".cache/zig/", "zig", built},
    {".cache/nim/", "nim", built},
    {".cache/crystal/", "crystal", built},
    {".cache/org.swift.swiftpm/", "swift packages", fetched},
    {".cache/vcpkg/archives/", "vcpkg", built},
    {".conan2/p/", "conan", "review localRepository"},
    {".conan/data/", "conan 1", "review localRepository"},
    {".spack/cache/", "spack", fetched},
    {".gradle/caches/", "gradle caches", fetched},
    {".gradle/wrapper/dists/", "gradle distributions", fetched},
    {".ivy2/cache/", "ivy", fetched},
    {".m2/wrapper/dists/", "maven distributions", fetched},
    {".m2/repository/", "maven repository", "review localRepository"},
    {".sbt/boot/", "sbt", fetched},
    {".cache/coursier/v1/", "coursier", fetched},
    {".cache/JetBrains/IdeaIC2024.1/", "IdeaIC2024.1", again},
    {".cache/Google/AndroidStudio2024.1/", "AndroidStudio2024.1", again},
    {".android/build-cache/", "Android builds", built},
    {".local/share/NuGet/http-cache/", "nuget http-cache", fetched},
    {".local/share/NuGet/v3-cache/", "nuget v3-cache", fetched},
    {".nuget/packages/", "nuget", fetched},
    {".cache/composer/", "composer", fetched},
    {".composer/cache/", "composer", fetched},
    {".bundle/cache/", "bundler", fetched},
    {".cache/gem/specs/", "gem index", fetched},
    {".gem/specs/", "gem index", fetched},
    {".cpan/build/", "cpan build", fetched},
    {".cpan/sources/", "cpan sources", fetched},
    {".cpanm/work/", "cpanm", fetched},
    {".hex/packages/", "hex", fetched},
    {".cache/rebar3/", "rebar3", fetched},
    {".stack/pantry/", "stack index", fetched},
    {".stack/snapshots/", "stack snapshots", "review costlyRebuild"},
    {".cabal/packages/", "cabal", "review onlyByCommand"},
    {".cache/cabal/packages/", "cabal", "review onlyByCommand"},
    {".opam/download-cache/", "opam", fetched},
    {".pub-cache/hosted/", "pub", fetched},
    {".julia/compiled/", "julia", built},
    {".julia/artifacts/", "julia artifacts", "review onlyByCommand"},
    {".julia/packages/", "julia packages", "review onlyByCommand"},
    {".cache/R/pkgcache/", "R packages (pak)", fetched},
    {".cache/R/renv/", "R packages (renv)", "review sharedStore"},
    {".cache/Tectonic/", "Tectonic", fetched},
    {".texlive2022/texmf-var/luatex-cache/", "LuaTeX 2022", built},
    {".texlive2023/texmf-var/luatex-cache/", "LuaTeX 2023", built},
    {".texlive2024/texmf-var/luatex-cache/", "LuaTeX 2024", built},
    {".texlive2025/texmf-var/luatex-cache/", "LuaTeX 2025", built},
    {".emacs.d/eln-cache/", "Emacs", built},
    {".config/emacs/eln-cache/", "Emacs", built},
    {".cache/Homebrew/", "Homebrew", fetched},
    {".cache/lima/", "lima", fetched},
    {".cache/trivy/", "trivy", fetched},
    {".kube/cache/", "kubectl", fetched},
    {".minikube/cache/iso/", "minikube iso", fetched},
    {".minikube/cache/preloaded-tarball/", "minikube preloaded-tarball", fetched},
    {".cache/helm/", "helm", "review onlyByCommand"},
    {".terraform.d/plugin-cache/", "terraform", "review sharedStore"},
    {".cache/paru/", "paru", "review localRepository"},
    {".cache/yay/", "yay", "review localRepository"},
};

constexpr Expected logFiles[] = {
    {".local/share/xorg/Xorg.0.log", "Xorg.0.log", "safe diagnosticLog"},
    {".xsession-errors", ".xsession-errors", "safe diagnosticLog"},
    {".xsession-errors.old", ".xsession-errors.old", "safe diagnosticLog"},
    {".npm/_logs/2026-debug-0.log", "2026-debug-0.log", "safe diagnosticLog"},
    {".gradle/daemon/8.5/daemon-1.out.log", "daemon-1.out.log", "safe diagnosticLog"},
    {".zoom/logs/zoom_stdout_stderr.log", "zoom_stdout_stderr.log", "safe diagnosticLog"},
};

constexpr Expected worktrees[] = {
    {".codex/worktrees/a/", "a", "review aiWorktree"},
    {".claude/worktrees/a/", "a", "review aiWorktree"},
    {".cursor/worktrees/a/", "a", "review aiWorktree"},
};

constexpr Expected attachments[] = {
    {".config/Mailspring/files/a/", "a", "review oldMailDownload"},
    {".var/app/com.getmailspring.Mailspring/config/Mailspring/files/a/", "a", "review oldMailDownload"},
    {".claws-mail/mimetmp/a.pdf", "a.pdf", "review oldMailDownload"},
    {".sylpheed-2.0/mimetmp/a.pdf", "a.pdf", "review oldMailDownload"},
    {".cache/evolution/tmp/a.pdf", "a.pdf", "review oldMailDownload"},
    {".local/share/geary/account_01/attachments/1/", "1", "review oldMailDownload"},
    {".var/app/org.gnome.Geary/data/geary/account_01/attachments/1/", "1", "review oldMailDownload"},
    {".thunderbird/p.default/Attachments/a.pdf", "a.pdf", "review oldMailDownload"},
};

/// Neighbours of those places that are no items: settings, logins, sessions, mail, what was installed.
constexpr std::string_view nearMisses[] = {
    ".android/avd/phone.avd/userdata.img",
    ".android/debug.keystore",
    ".ansible/cp/socket",
    ".ansible/roles/mine/tasks.yml",
    ".aws/cli/cache/session.json",
    ".aws/sso/cache/token.json",
    ".bun/install/global/package.json",
    ".bundle/config",
    ".cabal/config",
    ".cabal/store/ghc/package.db",
    ".cargo/bin/tool",
    ".cargo/config.toml",
    ".cargo/credentials.toml",
    ".cargo/registry/other",
    ".ccache/ccache.conf",
    ".claude/settings.json",
    ".composer/auth.json",
    ".conan2/credentials.json",
    ".conan2/profiles/default",
    ".conda/environments.txt",
    ".conda/envs/mine/bin/python",
    ".config/BraveSoftware/Brave-Browser/Default/Cookies",
    ".config/Code/Backups/1/file",
    ".config/Code/Cookies",
    ".config/Code/Local Storage/leveldb/1.ldb",
    ".config/Code/User/History/1/entry",
    ".config/Code/User/settings.json",
    ".config/Mailspring/edgehill.db",
    ".config/Slack/Cookies",
    ".config/Slack/IndexedDB/a",
    ".config/Slack/Local Storage/leveldb/1.ldb",
    ".config/Slack/Service Worker/CacheStorage/a",
    ".config/Slack/Session Storage/a",
    ".config/Slack/storage/root-state.json",
    ".config/discord/settings.json",
    ".config/emacs/init.el",
    ".config/google-chrome/Default/Cookies",
    ".config/google-chrome/Default/History",
    ".config/google-chrome/Default/Login Data",
    ".config/obsidian/obsidian.json",
    ".config/unheard-of/Cache/a",
    ".cpan/CPAN/MyConfig.pm",
    ".docker/config.json",
    ".emacs.d/init.el",
    ".gem/credentials",
    ".gem/ruby/3.1.0/gems/a/a.rb",
    ".gradle/daemon/8.5/registry.bin",
    ".gradle/gradle.properties",
    ".gradle/init.d/mine.gradle",
    ".hex/hex.config",
    ".ivy2/local/mine/a.jar",
    ".julia/config/startup.jl",
    ".julia/dev/Mine/src/Mine.jl",
    ".julia/environments/v1.10/Manifest.toml",
    ".julia/registries/General.toml",
    ".keras/keras.json",
    ".kube/config",
    ".local/share/JetBrains/consentOptions/accepted",
    ".local/share/NuGet/other/a",
    ".local/share/Steam/steamapps/common/Game/save",
    ".local/share/Steam/steamapps/compatdata/1/pfx/save",
    ".local/share/Steam/userdata/1/config",
    ".local/share/TelegramDesktop/tdata/key_datas",
    ".local/share/hatch/env/virtual/mine/bin/python",
    ".local/share/virtualenvs/mine-1234/bin/python",
    ".local/share/TelegramDesktop/tdata/user_data/other/a",
    ".local/share/evolution/mail/local/inbox",
    ".local/share/geary/account_01/geary.db",
    ".local/share/pnpm/global/5/package.json",
    ".local/state/nvim/shada/main.shada",
    ".m2/settings-security.xml",
    ".m2/settings.xml",
    ".minikube/cache/images/mine.tar",
    ".minikube/machines/minikube/disk.img",
    ".mozilla/firefox/p.default/cookies.sqlite",
    ".npm/other/a",
    ".npmrc",
    ".nuget/NuGet/NuGet.Config",
    ".nv/other",
    ".nvm/versions/node/v20/bin/node",
    ".opam/default/bin/ocaml",
    ".pub-cache/bin/tool",
    ".pub-cache/global_packages/tool/pubspec.lock",
    ".rustup/settings.toml",
    ".rustup/toolchains/stable/bin/rustc",
    ".sbt/1.0/credentials.sbt",
    ".spack/packages.yaml",
    ".ssh/id_ed25519",
    ".stack/config.yaml",
    ".stack/programs/ghc/bin/ghc",
    ".terraform.d/credentials.tfrc.json",
    ".texlive2022/texmf-config/web2c/updmap.cfg",
    ".texlive2022/texmf-var/fonts/map/pdftex/updmap/pdftex.map",
    ".thunderbird/p.default/Mail/Local Folders/Inbox",
    ".thunderbird/p.default/prefs.js",
    ".var/app/com.slack.Slack/config/Slack/Cookies",
    ".var/app/org.mozilla.firefox/.mozilla/firefox/p/cookies.sqlite",
    ".yarn/berry/index",
    ".yarnrc.yml",
    ".zoom/data/zoomus.enc.db",
    "go/bin/tool",
    "go/src/mine/main.go",
    "snap/firefox/common/.mozilla/firefox/p/cookies.sqlite",
};

struct Group {
  ScanCategory category;
  std::span<const Expected> items;
};

const Group groups[] = {
    {ScanCategory::applicationCache, applicationCaches},
    {ScanCategory::browserCache, browserCaches},
    {ScanCategory::developerCache, developerCaches},
    {ScanCategory::logs, logFiles},
    {ScanCategory::aiWorktree, worktrees},
    {ScanCategory::mailDownload, attachments},
};

std::string_view withoutSlash(std::string_view path) { return path.substr(0, path.size() - path.ends_with('/')); }

/// "Slack Cache, applicationCache, safe regenerableCache" by the path below the home.
using Found = std::map<std::string, std::string>;

std::string told(std::string_view name, ScanCategory category, std::string_view verdict) {
  return std::string(name).append(", ").append(caseName(category)).append(", ").append(verdict);
}

TEST(LinuxRulesTests, eachFindsItsPlaceAndNothingBeside) {
  ScanHome home{HomeLayout::linux};
  Found expected;
  for (const Group& group : groups)
    for (const Expected& item : group.items) {
      home.write(item.path.ends_with('/') ? std::string(item.path) + "content" : std::string(item.path));
      expected[std::string(withoutSlash(item.path))] = told(item.name, group.category, item.verdict);
    }
  for (const std::string_view path : nearMisses) home.write(path);
  home.age("", 24h * 40);

  Found found;
  const ScanResult result = home.scan();
  for (const ScanItem& item : result.items) {
    const std::string reason = item.reasonKey.substr(item.reasonKey.find('.') + 1);
    const std::string path(relativeTo(home.folder.path(), item.url.path));
    EXPECT_TRUE(
        found.emplace(path, told(item.displayName, item.category, std::string(caseName(item.safety)) + " " + reason))
            .second)
        << path << " twice";
    EXPECT_EQ(item.isSelected, item.safety == SafetyLevel::safe) << path;
  }
  for (const auto& [path, tells] : expected) EXPECT_EQ(found[path], tells) << path;
  for (const auto& [path, tells] : found) EXPECT_TRUE(expected.contains(path)) << path << ": " << tells;
}

/// Whether one of the expected items lies where the rule looks, or is what it looks for.
bool isTried(const FilePath& place) {
  return std::ranges::any_of(groups, [&](const Group& group) {
    return std::ranges::any_of(group.items, [&](const Expected& item) {
      const PatternMatch match = matched({"/h/" + std::string(withoutSlash(item.path))}, place);
      return match == PatternMatch::exactly || match == PatternMatch::below;
    });
  });
}

FilePath placeOf(LocationBase base, std::string_view path) {
  switch (base) {
    case LocationBase::home: return joined({"/h"}, path);
    case LocationBase::cache: return joined({"/h/.cache"}, path);
    case LocationBase::configuration: return joined({"/h/.config"}, path);
    case LocationBase::data: return joined({"/h/.local/share"}, path);
    case LocationBase::state: return joined({"/h/.local/state"}, path);
    case LocationBase::downloads: return joined({"/h/Downloads"}, path);
  }
  std::unreachable();
}

TEST(LinuxRulesTests, noneThatNamesAProgramIsUntried) {
  for (const LocationRule& rule : linuxLocations().rules) {
    if (rule.name.empty()) continue;
    EXPECT_TRUE(isTried(placeOf(rule.base, rule.path))) << rule.path;
  }
  for (const KnownCache& known : linuxLocations().knownCaches)
    EXPECT_TRUE(isTried(placeOf(LocationBase::cache, known.name))) << known.name;
}

TEST(LinuxRulesTests, aPlaceThatIsMissingCostsOneLook) {
  ScanHome home{HomeLayout::linux};
  home.folder.makeFolders(".cache");
  home.folder.makeFolders(".config");
  home.folder.makeFolders(".local/share");
  home.folder.makeFolders(".local/state");
  home.fileSystem.countOnly({FileCall::openFolder, FileCall::statusOfName});
  home.scan({{ScanCategory::applicationCache, ScanCategory::developerCache}});
  // Looking for the rules' places, and resolving them for the cleaning roots.
  EXPECT_LE(home.fileSystem.calls(), 2 * linuxLocations().rules.size());
}

/// Two rules that would make an item of the same thing, or one inside another's, would depend on their order.
TEST(LinuxRulesTests, noneLiesInsideAnother) {
  std::vector<FilePath> items;
  for (const LocationRule& rule : linuxLocations().rules) {
    if (rule.name.empty()) continue;
    const FilePath place = placeOf(rule.base, rule.path);
    for (const std::string_view part : partsOf(rule)) items.push_back(joined(place, part));
    if (rule.subject == LocationSubject::itself) items.push_back(place);
    if (rule.subject == LocationSubject::entries || rule.subject == LocationSubject::files)
      items.push_back(joined(place, "*"));
  }
  for (std::size_t one = 0; one < items.size(); ++one)
    for (std::size_t other = 0; other < items.size(); ++other)
      if (one != other) {
        EXPECT_EQ(matched(items[one], items[other]), PatternMatch::none)
            << items[one].bytes << " and " << items[other].bytes;
      }
}

}  // namespace
}  // namespace quorvane
