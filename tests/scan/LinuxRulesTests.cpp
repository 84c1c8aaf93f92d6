// Every rule of the Linux table that names a program, on real folders: what it makes of its place, and what it leaves
// alone.
#include "quorvane/scan/locations/LocationTable.h"
#include "quorvane/scan/policy/PathPattern.h"
#include "tests/support/ScanHome.h"

#include <gtest/gtest.h>

#include <map>
#include <ranges>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorvane {
namespace {

using namespace std::chrono_literals;

/// Paths below the home or a folder of it, between "|".
struct Names {
  std::string_view key;
  std::string_view paths;

  std::vector<std::string> split() const {
    std::vector<std::string> all;
    for (const auto path : std::views::split(paths, '|')) all.emplace_back(path.begin(), path.end());
    return all;
  }
};

/// All that is found and is not safe, by its level and the reason without its family. Written by hand: no rule becomes
/// safe, or stops being so, by a slip.
constexpr Names notSafe[] = {
    {"review offlineCopies",
     ".cache/spotify|.var/app/com.spotify.Client/cache/spotify|snap/spotify/common/.cache/spotify|"
     ".cache/evolution/mail|.cache/evolution/calendar|.cache/evolution/addressbook|.cache/evolution/memos|"
     ".cache/evolution/tasks"},
    {"review costlyRebuild", ".cache/tracker3|.local/share/Steam/steamapps/shadercache|.stack/snapshots|.nv/GLCache"},
    {"review undocumented",
     ".local/share/TelegramDesktop/tdata/user_data/cache|"
     ".local/share/TelegramDesktop/tdata/user_data/media_cache|.android/build-cache"},
    {"blocked ownDataAmongCaches",
     ".cache/deno/location_data|.cache/huggingface/token|.cache/huggingface/stored_tokens"},
    {"review unknownCache",
     ".cache/pypoetry/virtualenvs|.cache/coursier/jvm|.cache/evolution/sources|.cache/R/other|"
     ".cache/rebar3/bin|.cache/rebar3/lib|.cache/helm/plugins"},
    {"review sharedStore",
     ".conda/pkgs|.yarn/berry/cache|.local/share/pnpm/store|.cache/R/renv|.terraform.d/plugin-cache|"
     ".cache/pdm|.local/share/virtualenv|.nuget/packages|.pub-cache/hosted"},
    {"review mayHoldLogins", ".cache/yt-dlp"},
    {"review costlyDownload",
     ".cache/huggingface/hub|.cache/huggingface/datasets|.cache/huggingface/assets|.cache/huggingface/xet|"
     ".keras/datasets|.keras/models|.cache/torch/hub|.cache/whisper"},
    {"review onlyByCommand",
     ".cache/ms-playwright|.cache/puppeteer|.cache/Cypress|.cabal/packages|.cache/cabal/packages|"
     ".julia/artifacts|.julia/packages|.cache/helm/repository"},
    {"review localRepository", ".conan2/p|.conan/data|.m2/repository|.cache/paru|.cache/yay"},
    {"review localHistory", ".cache/pre-commit"},
    {"review aiWorktree", ".codex/worktrees/a|.claude/worktrees/a|.cursor/worktrees/a"},
    {"review oldMailDownload",
     ".config/Mailspring/files/a|.var/app/com.getmailspring.Mailspring/config/Mailspring/files/a|"
     ".claws-mail/mimetmp/a|.sylpheed-2.0/mimetmp/a|.cache/evolution/tmp/a|"
     ".local/share/geary/any/attachments/a|.var/app/org.gnome.Geary/data/geary/any/attachments/a|"
     ".thunderbird/any/Attachments/a"},
};

/// Neighbours of the rules' places that are no items: settings, logins, sessions, mail, what was
/// installed. By the folder that they lie in.
constexpr Names nearMisses[] = {
    {".android/", "avd/phone.avd/userdata.img|debug.keystore"},
    {".ansible/", "cp/socket|roles/mine/tasks.yml"},
    {".aws/", "cli/cache/session.json|sso/cache/token.json"},
    {".cabal/", "config|store/ghc/package.db"},
    {".cargo/", "bin/tool|config.toml|credentials.toml|registry/other"},
    {".conan2/", "credentials.json|profiles/default"},
    {".conda/", "environments.txt|envs/mine/bin/python"},
    {".config/",
     "BraveSoftware/Brave-Browser/Default/Cookies|Code/Backups/1/file|Code/Cookies|"
     "Code/Local Storage/leveldb/1.ldb|Code/User/History/1/entry|Code/User/settings.json|"
     "Mailspring/edgehill.db|Slack/Cookies|Slack/IndexedDB/a|Slack/Local Storage/leveldb/1.ldb|"
     "Slack/Service Worker/CacheStorage/a|Slack/Session Storage/a|Slack/storage/root-state.json|"
     "discord/settings.json|emacs/init.el|google-chrome/Default/Cookies|google-chrome/Default/History|"
     "google-chrome/Default/Login Data|obsidian/obsidian.json|unheard-of/Cache/a"},
    {".gem/", "credentials|ruby/3.1.0/gems/a/a.rb"},
    {".gradle/", "daemon/8.5/registry.bin|gradle.properties|init.d/mine.gradle"},
    {".julia/", "config/startup.jl|dev/Mine/src/Mine.jl|environments/v1.10/Manifest.toml|registries/General.toml"},
    {".local/share/",
     "JetBrains/consentOptions/accepted|NuGet/other/a|Steam/steamapps/common/Game/save|"
     "Steam/steamapps/compatdata/1/pfx/save|Steam/userdata/1/config|TelegramDesktop/tdata/key_datas|"
     "hatch/env/virtual/mine/bin/python|virtualenvs/mine-1234/bin/python|"
     "TelegramDesktop/tdata/user_data/other/a|evolution/mail/local/inbox|geary/account_01/geary.db|"
     "pnpm/global/5/package.json"},
    {".m2/", "settings-security.xml|settings.xml"},
    {".minikube/", "cache/images/mine.tar|machines/minikube/disk.img"},
    {".pub-cache/", "bin/tool|global_packages/tool/pubspec.lock"},
    {".rustup/", "settings.toml|toolchains/stable/bin/rustc"},
    {".stack/", "config.yaml|programs/ghc/bin/ghc"},
    {".texlive2022/", "texmf-config/web2c/updmap.cfg|texmf-var/fonts/map/pdftex/updmap/pdftex.map"},
    {".thunderbird/", "p.default/Mail/Local Folders/Inbox|p.default/prefs.js"},
    {".var/", "app/com.slack.Slack/config/Slack/Cookies|app/org.mozilla.firefox/.mozilla/firefox/p/cookies.sqlite"},
    {"go/", "bin/tool|src/mine/main.go"},
    {"",
     ".bun/install/global/package.json|.bundle/config|.ccache/ccache.conf|.claude/settings.json|"
     ".composer/auth.json|.cpan/CPAN/MyConfig.pm|.docker/config.json|.emacs.d/init.el|.hex/hex.config|"
     ".ivy2/local/mine/a.jar|.keras/keras.json|.kube/config|.kube/cache/oidc-login/token|.local/state/nvim/shada/"
     "main.shada|"
     ".mozilla/firefox/p.default/cookies.sqlite|.npm/other/a|.npmrc|.nuget/NuGet/NuGet.Config|.nv/other|"
     ".nvm/versions/node/v20/bin/node|.opam/default/bin/ocaml|.sbt/1.0/credentials.sbt|"
     ".spack/packages.yaml|.ssh/id_ed25519|.terraform.d/credentials.tfrc.json|.yarn/berry/index|"
     ".yarnrc.yml|.zoom/data/zoomus.enc.db|snap/firefox/common/.mozilla/firefox/p/cookies.sqlite"},
};

std::string_view folderOf(LocationBase base) {
  switch (base) {
    case LocationBase::home: return "";
    case LocationBase::cache: return ".cache/";
    case LocationBase::configuration: return ".config/";
    case LocationBase::data: return ".local/share/";
    case LocationBase::state: return ".local/state/";
    case LocationBase::downloads: return "Downloads/";
  }
  std::unreachable();
}

/// What an entry that the rule looks for is called.
std::string wantedBy(const LocationRule& rule) {
  return rule.kind == LocationKind::log ? "a.log" : rule.namePart.empty() ? "a" : std::string(rule.namePart) + "1";
}

/// The places of a rule's items below the home, with "*" for any name.
std::vector<std::string> placesOf(const LocationRule& rule) {
  const std::string place = std::string(folderOf(rule.base)).append(rule.path);
  std::vector<std::string> places;
  for (const std::string_view part : partsOf(rule)) places.push_back(place + "/" + std::string(part));
  if (rule.subject == LocationSubject::itself) places.push_back(place);
  if (rule.subject == LocationSubject::entries || rule.subject == LocationSubject::files)
    places.push_back(place + "/*");
  return places;
}

/// "applicationCache, safe regenerableCache" by the path below the home.
using Found = std::map<std::string, std::string>;

std::string told(ScanCategory category, SafetyLevel safety, std::string_view reasonKey) {
  return std::string(caseName(category)) + ", " + std::string(caseName(safety)) + " " +
         std::string(reasonKey.substr(reasonKey.find('.') + 1));
}

/// Makes what every rule that names a program looks for, and every known cache in each kind of cache home.
Found makeAll(ScanHome& home) {
  Found made;
  const auto make = [&](std::string path, const std::string& leaf, bool isFile, const std::string& tells) {
    if (path.ends_with("/*")) path.replace(path.size() - 1, 1, leaf);
    for (std::size_t star = 0; (star = path.find('*')) != std::string::npos;) path.replace(star, 1, "any");
    home.write(isFile ? path : path + "/content");
    made[path] = tells;
  };
  for (const LocationRule& rule : linuxLocations().rules)
    if (!rule.name.empty())
      for (const std::string& place : placesOf(rule))
        make(place, wantedBy(rule), rule.kind == LocationKind::log, told(rule.category, rule.safety, rule.reasonKey));
  for (const KnownCache& known : linuxLocations().knownCaches)
    for (const std::string_view folder : {".cache/", ".var/app/*/cache/", "snap/*/common/.cache/"})
      make(std::string(folder).append(known.name), {}, known.isFile,
           told(known.category, SafetyLevel::safe, "reason.regenerableCache"));
  return made;
}

void expectSame(Found found, const Found& expected) {
  for (const auto& [path, tells] : expected) EXPECT_EQ(found[path], tells) << path;
  for (const auto& [path, tells] : found) EXPECT_TRUE(expected.contains(path)) << path << ": " << tells;
}

TEST(LinuxRulesTests, eachFindsItsPlaceAndNothingBeside) {
  ScanHome home{HomeLayout::linux};
  Found expected = makeAll(home), expectedNotSafe;
  for (const Names& names : notSafe)
    for (const std::string& path : names.split()) {
      if (expected.try_emplace(path, "applicationCache, " + std::string(names.key)).second)
        home.write(path + "/content");
      expectedNotSafe[path] = names.key;
    }
  for (const Names& names : nearMisses)
    for (const std::string& path : names.split()) home.write(std::string(names.key) + path);
  home.age("", 24h * 40);

  Found found, foundNotSafe;
  const ScanResult result = home.scan();
  for (const ScanItem& item : result.items) {
    const std::string path(relativeTo(home.folder.path(), item.url.path));
    const std::string tells = told(item.category, item.safety, item.reasonKey);
    EXPECT_TRUE(found.emplace(path, tells).second) << path << " twice";
    EXPECT_EQ(item.isSelected, item.safety == SafetyLevel::safe) << path;
    if (item.safety != SafetyLevel::safe) foundNotSafe[path] = tells.substr(tells.find(", ") + 2);
  }
  expectSame(found, expected);
  expectSame(foundNotSafe, expectedNotSafe);
  for (const auto& [path, name] : {std::pair{".config/Slack/Code Cache", "Slack Code Cache"},
                                   {".nvm/.cache", "nvm"},
                                   {".thunderbird/any/Attachments/a", "a"},
                                   {".cache/mozilla", "mozilla"}})
    EXPECT_EQ(itemAt(result, home.at(path)).displayName, name);
}

TEST(LinuxRulesTests, aPlaceThatIsMissingCostsOneLook) {
  ScanHome home{HomeLayout::linux};
  for (const char* folder : {".cache", ".config", ".local/share", ".local/state"}) home.folder.makeFolders(folder);
  home.fileSystem.countOnly({FileCall::openFolder, FileCall::statusOfName});
  home.scan({{ScanCategory::applicationCache, ScanCategory::developerCache}});
  // Looking for the rules' places, and resolving them for the cleaning roots.
  EXPECT_LE(home.fileSystem.calls(), 2 * linuxLocations().rules.size());
}

/// Two rules that would make an item of the same thing, or one inside another's, would depend on their order.
TEST(LinuxRulesTests, noneLiesInsideAnother) {
  std::vector<FilePath> items;
  for (const LocationRule& rule : linuxLocations().rules)
    if (!rule.name.empty())
      for (const std::string& place : placesOf(rule)) items.push_back({"/" + place});
  for (std::size_t one = 0; one < items.size(); ++one)
    for (std::size_t other = 0; other < items.size(); ++other)
      if (one != other) {
        EXPECT_EQ(matched(items[one], items[other]), PatternMatch::none)
            << items[one].bytes << " and " << items[other].bytes;
      }
}

}  // namespace
}  // namespace quorvane
