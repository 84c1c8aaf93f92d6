#include "quorvane/scan/LocationTable.h"
#include "quorvane/scan/UserDirectories.h"
#include "tests/support/ScanHome.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <string>

#include <sys/mount.h>
#include <unistd.h>

namespace quorvane {
namespace {

using namespace std::chrono_literals;

constexpr auto day = 24h;
const std::string tag = "Signature: 8a477f597d28d172789f06886806bc55\n# made by a test";

class LinuxScanTests : public testing::Test {
 protected:
  ScanHome home{HomeLayout::linux};
};

TEST_F(LinuxScanTests, aCacheIsSafeOnlyWhenSomebodyVouchesForIt) {
  home.write(".cache/thumbnails/large/a.png");
  home.write(".cache/mozilla/firefox/p/cache2/e");
  home.write(".cache/unheard-of/data");
  home.write(".cache/a loose file");
  home.write(".cache/tagged/CACHEDIR.TAG", tag);
  home.write(".cache/falsely-tagged/CACHEDIR.TAG", "Signature: something else");
  home.write(".cache/Bitwarden/CACHEDIR.TAG", tag);
  home.write(".cache/com.nordvpn.app/data");
  home.write(".cache/pip/http/a");
  home.write(".cache/pypoetry/cache/a");
  home.write(".cache/pypoetry/virtualenvs/mine/bin");
  home.write(".var/app/org.example.App/cache/fontconfig/a");
  home.write(".var/app/org.example.App/cache/tmp/a");
  home.write(".var/app/org.example.App/config/settings");
  home.write(".var/app/com.bitwarden.desktop/cache/thumbnails/a");
  home.write("snap/chromium/common/.cache/chromium/a");
  home.age("", 2 * day);
  EXPECT_EQ(home.verdicts(),
            (std::map<std::string, std::string>{
                {".cache/thumbnails", "safe reason.regenerableCache selected"},
                {".cache/mozilla", "safe reason.regenerableCache selected"},
                {".cache/unheard-of", "review reason.unknownCache"},
                {".cache/a loose file", "review reason.unknownCache"},
                {".cache/tagged", "safe reason.cacheTag selected"},
                {".cache/falsely-tagged", "review reason.unknownCache"},
                {".cache/Bitwarden", "blocked reason.sensitiveApplicationProtected"},
                {".cache/com.nordvpn.app", "blocked reason.sensitiveApplicationProtected"},
                {".cache/pip", "safe reason.packageCache selected"},
                {".cache/pypoetry/cache", "safe reason.packageCache selected"},
                {".cache/pypoetry/virtualenvs", "review reason.unknownCache"},
                {".var/app/org.example.App/cache/fontconfig", "safe reason.regenerableCache selected"},
                {".var/app/org.example.App/cache/tmp", "review reason.unknownCache"},
                {".var/app/com.bitwarden.desktop/cache/thumbnails", "blocked reason.sensitiveApplicationProtected"},
                {"snap/chromium/common/.cache/chromium", "safe reason.regenerableCache selected"},
            }));
  EXPECT_EQ(itemAt(home.scan(), home.at(".cache/mozilla")).category, ScanCategory::browserCache);
}

TEST_F(LinuxScanTests, findsTheOtherPlacesOfTheTable) {
  home.write(".npm/_cacache/content/a");
  home.write(".npm/_logs/2024-debug-0.log");
  home.write(".npm/other/a");
  home.write(".m2/repository/org/a.jar");
  home.write(".cache/JetBrains/Idea2024.1/caches/a");
  home.write(".cache/JetBrains/Clion2024.1/LocalHistory/changes");
  home.write(".local/state/app/app.log");
  home.write(".local/state/app/state.db");
  home.write(".local/state/app/logs/old");
  home.write(".local/share/xorg/Xorg.0.log");
  home.write(".local/share/app/logs/app.log.1");
  home.write(".xsession-errors");
  home.write("projects/rust/target/CACHEDIR.TAG", tag);
  home.write("projects/rust/src/main.rs");
  home.write("projects/group/python/.mypy_cache/CACHEDIR.TAG", tag);
  home.write("projects/python/.venv/CACHEDIR.TAG", tag);
  home.write("projects/python/.venv/pyvenv.cfg");
  home.write("projects/a/b/c/too-deep/CACHEDIR.TAG", tag);
  home.write(".config/Mailspring/files/ab/attachment.pdf");
  home.write("Downloads/tool.AppImage");
  home.write("Downloads/tool.deb");
  home.write("Downloads/paper.pdf");
  home.age("", 40 * day);
  EXPECT_EQ(home.verdicts(), (std::map<std::string, std::string>{
                                 {".npm/_cacache", "safe reason.packageCache selected"},
                                 {".npm/_logs/2024-debug-0.log", "safe reason.diagnosticLog selected"},
                                 {".m2/repository", "review reason.localRepository"},
                                 {".cache/JetBrains/Idea2024.1", "safe reason.regenerableCache selected"},
                                 {".cache/JetBrains/Clion2024.1", "review reason.localHistory"},
                                 {".local/state/app/app.log", "safe reason.diagnosticLog selected"},
                                 {".local/state/app/logs/old", "safe reason.diagnosticLog selected"},
                                 {".local/share/xorg/Xorg.0.log", "safe reason.diagnosticLog selected"},
                                 {".local/share/app/logs/app.log.1", "review reason.diagnosticLog"},
                                 {".xsession-errors", "safe reason.diagnosticLog selected"},
                                 {"projects/rust/target", "safe reason.cacheTag selected"},
                                 {"projects/group/python/.mypy_cache", "safe reason.cacheTag selected"},
                                 {"projects/python/.venv", "review reason.environment"},
                                 {".config/Mailspring/files/ab", "review reason.oldMailDownload"},
                                 {"Downloads/tool.AppImage", "review reason.oldInstaller"},
                                 {"Downloads/tool.deb", "review reason.oldInstaller"},
                             }));
  home.age("projects/rust/target", 23h);
  home.age(".m2/repository", 23h);
  const ScanResult result = home.scan();
  EXPECT_EQ(verdictOf(itemAt(result, home.at("projects/rust/target"))), "blocked reason.recentDerivedDataProtected");
  EXPECT_EQ(verdictOf(itemAt(result, home.at(".m2/repository"))), "blocked reason.recentDerivedDataProtected");
}

TEST_F(LinuxScanTests, nobodyVouchesForAnotherKindOfThingUnderAKnownName) {
  home.folder.makeFolders(".cache/real");
  home.write(".cache/icon-cache.kcache");
  home.write(".cache/fontconfig");
  home.write(".cache/uv");
  home.folder.makeLink(".cache/thumbnails", "real");
  home.folder.makeLink(".cache/pip", "real");
  home.write(".xsession-errors/file");
  home.write(".local/state/app/app.log-20240101");
  home.write(".local/state/app/app.log.1");
  home.write(".local/state/app/keys.logins");
  home.write(".local/state/app/.login-keyring");
  home.age("", 40 * day);
  EXPECT_EQ(home.verdicts(), (std::map<std::string, std::string>{
                                 {".cache/real", "review reason.unknownCache"},
                                 {".cache/icon-cache.kcache", "safe reason.regenerableCache selected"},
                                 {".cache/fontconfig", "review reason.unknownCache"},
                                 {".cache/uv", "review reason.unknownCache"},
                                 {".cache/thumbnails", "review reason.unknownCache"},
                                 {".cache/pip", "review reason.unknownCache"},
                                 {".xsession-errors", "review reason.unknownCache"},
                                 {".local/state/app/app.log-20240101", "safe reason.diagnosticLog selected"},
                                 {".local/state/app/app.log.1", "safe reason.diagnosticLog selected"},
                             }));
}

TEST_F(LinuxScanTests, aTagDoesNotMakeSomebodysWorkDisposable) {
  home.write("projects/tagged/CACHEDIR.TAG", tag);
  home.write("projects/tagged/.git/HEAD");
  home.write("projects/tagged/target/CACHEDIR.TAG", tag);
  home.write("projects/several/CACHEDIR.TAG", tag);
  home.write("projects/several/deep/one/.git", "gitdir: elsewhere");
  home.write(".cache/work/CACHEDIR.TAG", tag);
  home.write(".cache/work/.hg/store");
  home.age("", 40 * day);
  EXPECT_EQ(home.verdicts(), (std::map<std::string, std::string>{
                                 {"projects/tagged/target", "safe reason.cacheTag selected"},
                                 {"projects/several", "review reason.unknownCache"},
                                 {".cache/work", "review reason.unknownCache"},
                             }));
}

TEST_F(LinuxScanTests, aMergedWorktreeIsNotSafeWithAnotherRepositoryInIt) {
  ProcessRequest request;
  request.executable = {"/bin/sh"};
  request.arguments = {"-ec", R"(
      git init -q -b main repo; echo build/ > repo/.gitignore
      git -C repo add .; git -C repo commit -qm first
      git -C repo worktree add -q -b plain ../.claude/worktrees/plain
      git -C repo worktree add -q -b nested ../.claude/worktrees/nested
      git init -q .claude/worktrees/nested/build/own
    )"};
  request.environment = {{"PATH", "/usr/bin:/bin"},     {"HOME", home.folder.path().bytes},
                         {"GIT_CONFIG_NOSYSTEM", "1"},  {"GIT_AUTHOR_NAME", "A"},
                         {"GIT_AUTHOR_EMAIL", "a@t"},   {"GIT_COMMITTER_NAME", "A"},
                         {"GIT_COMMITTER_EMAIL", "a@t"}};
  request.workingFolder = home.folder.path();
  request.timeLimit = 60s;
  const auto made = home.runner.run(request, {});
  ASSERT_TRUE(made && made->exitCode == 0) << (made ? made->standardError : "");
  EXPECT_EQ(home.verdicts(), (std::map<std::string, std::string>{
                                 {".claude/worktrees/plain", "safe reason.aiWorktree.merged"},
                                 {".claude/worktrees/nested", "review reason.aiWorktree"},
                             }));
}

TEST_F(LinuxScanTests, everyLocationHasExactlyOneEntry) {
  home.write(".cache/a/b");
  home.write("Downloads", "a file where a folder should be");
  home.folder.makeFolders("elsewhere/worktrees/w");
  home.folder.makeLink(".codex", "elsewhere");
  const ScanResult result = home.scan();
  const LocationFolders folders(home.settings, home.fileSystem);
  for (const LocationRule& rule : linuxLocations().rules) {
    const FilePath location = joined(folders.at(rule.base), rule.path);
    EXPECT_EQ(std::ranges::count(result.coverage->entries, location, &ScanCoverageEntry::path), 1) << location.bytes;
  }
  const auto standing = [&](const char* path) {
    const ScanCoverageEntry& entry = coverageAt(result, home.at(path));
    return std::string(caseName(entry.status)) + " " + std::string(caseName(entry.reason)) + " " +
           std::to_string(entry.itemCount);
  };
  EXPECT_EQ(standing(".cache"), "complete read 1");
  EXPECT_EQ(standing(".var/app/*/cache"), "absent missing 0");
  EXPECT_EQ(standing("Downloads"), "skipped notAFolder 0");
  EXPECT_EQ(standing(".codex/worktrees"), "skipped link 0");
  EXPECT_EQ(standing(".cursor/worktrees"), "absent missing 0");
  EXPECT_FALSE(hasItemAt(result, home.at("elsewhere/worktrees/w")));

  const ScanResult logsOnly = home.scan({{ScanCategory::logs}});
  EXPECT_EQ(coverageAt(logsOnly, home.at(".cache")).reason, ScanCoverageReason::categoryNotAsked);
  EXPECT_TRUE(logsOnly.items.empty());
}

TEST_F(LinuxScanTests, whatIsOutOfBoundsBecomesNoItem) {
  home.write(".cache/ignored/a");
  home.write(".cache/ignored-not/a");
  home.write(".cache/holds-ignored/keep/a");
  home.write(".cache/own/state/a");
  home.write("Dropbox/Downloads/tool.deb");
  home.age("", 40 * day);
  home.settings.folders.applicationSupport = home.at(".cache/own/state");
  ASSERT_TRUE(home.ignoreStore->add(home.at(".cache/ignored")).has_value());
  home.folder.makeLink(".cache/ignored-link", "../precious");
  ASSERT_TRUE(home.ignoreStore->add(home.at(".cache/holds-ignored/keep")).has_value());
  ASSERT_TRUE(home.ignoreStore->add(home.at(".cache/ignored-link")).has_value());
  home.write(".config/user-dirs.dirs", "XDG_DOWNLOAD_DIR=\"$HOME/Dropbox/Downloads\"\n");
  const ScanResult result = home.scan();
  EXPECT_EQ(coverageAt(result, home.at(".cache/ignored")).reason, ScanCoverageReason::ignored);
  EXPECT_EQ(coverageAt(result, home.at(".cache/holds-ignored")).reason, ScanCoverageReason::ignored);
  EXPECT_EQ(coverageAt(result, home.at(".cache/ignored-link")).reason, ScanCoverageReason::ignored);
  EXPECT_EQ(coverageAt(result, home.at(".cache/own")).reason, ScanCoverageReason::ownData);
  EXPECT_EQ(coverageAt(result, home.at("Dropbox/Downloads/tool.deb")).reason, ScanCoverageReason::cloud);
  ASSERT_EQ(result.items.size(), 1u);
  EXPECT_EQ(result.items[0].url.path, home.at(".cache/ignored-not"));
}

TEST_F(LinuxScanTests, aDamagedIgnoreFileIsToldAndLeftAlone) {
  home.write(".cache/a/b");
  home.write(".local/share/Quorvane/ignored-paths.json", "[{\"id\":");
  const ScanResult result = home.scan();
  EXPECT_EQ(result.items.size(), 1u);
  ASSERT_EQ(result.coverage->notices.size(), 1u);
  EXPECT_EQ(result.coverage->notices[0].key, "coverage.notice.ignoreRulesUnreadable");
  EXPECT_EQ(home.folder.read(".local/share/Quorvane/ignored-paths.json"), "[{\"id\":");
}

TEST_F(LinuxScanTests, whatCouldNotBeSeenWholeIsNotSafe) {
  home.write(".cache/thumbnails/large/a");
  home.age("", 2 * day);
  home.fileSystem.countOnly({FileCall::list});
  home.fileSystem.failAt(home.fileSystem.calls() + 3, FaultSpan::fromThereOn, EACCES);
  const ScanResult result = home.scan({{ScanCategory::applicationCache}});
  ASSERT_EQ(result.items.size(), 1u);
  EXPECT_EQ(verdictOf(result.items[0]), "review reason.partlyUnreadable");
  EXPECT_FALSE(result.items[0].snapshot.has_value());
  const ScanCoverageEntry& entry = coverageAt(result, home.at(".cache"));
  EXPECT_EQ(entry.status, ScanCoverageStatus::partial);
  EXPECT_EQ(entry.unreadablePaths, std::vector<FilePath>{home.at(".cache/thumbnails/large")});
  EXPECT_EQ(result.unreadablePaths, entry.unreadablePaths);
}

TEST_F(LinuxScanTests, anAskedForHomeIsNotLeftThroughALink) {
  const TempFolder elsewhere;
  elsewhere.write("thumbnails/a", "x");
  home.folder.makeLink(".cache", elsewhere.path().bytes);
  const ScanResult confined = home.scan();
  EXPECT_TRUE(confined.items.empty());
  EXPECT_EQ(coverageAt(confined, home.at(".cache")).reason, ScanCoverageReason::link);
  home.settings.folders.isConfined = false;
  EXPECT_EQ(home.scan().items.size(), 1u) << "one's own cache may be kept on another disk";
}

TEST_F(LinuxScanTests, aFolderThatCannotBeReadIsNamedOnce) {
  home.write(".local/state/app/app.log");
  home.fileSystem.countOnly({FileCall::list});
  home.fileSystem.failAt(1, FaultSpan::fromThereOn, EACCES);
  EXPECT_EQ(home.scan({{ScanCategory::logs}}).unreadablePaths, std::vector<FilePath>{home.at(".local/state")});
}

/// Volumes that cannot say what is mounted.
class SilentVolumes final : public Volumes {
 public:
  Outcome<VolumeIdentity, PosixError> identity(int) override { return failure(PosixError{EIO}); }
  Outcome<VolumeCapacity, PosixError> capacity(const FilePath&) override { return failure(PosixError{EIO}); }
  Outcome<std::vector<FilePath>, PosixError> mountPoints() override { return failure(PosixError{EIO}); }
};

TEST_F(LinuxScanTests, whatHoldsAnotherVolumeIsNeverOffered) {
  home.write(".cache/thumbnails/large/a");
  home.folder.makeFolders(".cache/thumbnails/mounted");
  home.age("", 2 * day);
  const std::string mountPoint = home.at(".cache/thumbnails/mounted").bytes;
  if (::mount("none", mountPoint.c_str(), "tmpfs", 0, "size=1m") != 0) {
    GTEST_SKIP() << "skipped: mounting is not permitted";
  }
  const ScanResult known = home.scan();
  home.volumes = std::make_unique<SilentVolumes>();
  const ScanResult unknown = home.scan();
  ::umount(mountPoint.c_str());
  EXPECT_TRUE(known.items.empty());
  EXPECT_EQ(coverageAt(known, home.at(".cache/thumbnails")).reason, ScanCoverageReason::mountPoint);
  ASSERT_EQ(unknown.items.size(), 1u) << "the walk meets the other volume by itself";
  EXPECT_EQ(verdictOf(unknown.items[0]), "blocked reason.mountInside");
  EXPECT_EQ(unknown.coverage->notices[0].key, "coverage.notice.mountsUnknown");
}

TEST_F(LinuxScanTests, whatChangesWhileItIsReadIsNotSafe) {
  home.write(".cache/thumbnails/large/a");
  home.age("", 2 * day);
  home.fileSystem.countOnly({FileCall::openFolder});
  const ScanRequest caches{{ScanCategory::applicationCache}};
  home.scan(caches);
  const std::size_t calls = home.fileSystem.calls();  // the last of them opens the folder inside
  home.fileSystem.beforeCall(2 * calls, [&] {
    ::unlink(home.at(".cache/thumbnails/large/a").bytes.c_str());
    ::rmdir(home.at(".cache/thumbnails/large").bytes.c_str());
  });
  const ScanResult result = home.scan(caches);
  ASSERT_EQ(result.items.size(), 1u);
  EXPECT_EQ(verdictOf(result.items[0]), "review reason.changing");
  EXPECT_EQ(coverageAt(result, home.at(".cache")).reason, ScanCoverageReason::changing);
}

TEST_F(LinuxScanTests, linksAreItemsThemselves) {
  home.write("precious/data", std::string(1 << 20, 'p'));
  home.folder.makeFolders(".cache");
  home.folder.makeLink(".cache/thumbnails", "../precious");
  home.folder.makeLink(".cache/dangling", "nowhere");
  const ScanResult result = home.scan();
  ASSERT_EQ(result.items.size(), 2u);
  for (const ScanItem& item : result.items) {
    EXPECT_LT(item.size, 1 << 20);
    EXPECT_FALSE(item.isSelected) << "what a link points to lies outside of the cleaning roots";
  }
}

TEST_F(LinuxScanTests, reportsEveryStepForwardAndCanBeCancelled) {
  for (int i = 0; i < 10; ++i) home.write(".cache/c" + std::to_string(i) + "/file");
  home.write(".xsession-errors");
  Mutex mutex;
  std::vector<CleaningScanProgressUpdate> updates;
  ScanPauseControl control;
  const auto keep = [&](CleaningScanProgressUpdate update) {
    const MutexLock lock(mutex);
    updates.push_back(std::move(update));
  };
  ASSERT_TRUE(home.scanner().scan({}, control, keep).has_value());
  EXPECT_EQ(updates.front().statusKey, "scan.status.appCaches");
  EXPECT_DOUBLE_EQ(updates.front().progress, 0.05);
  EXPECT_EQ(updates.back().statusKey, "scan.status.finished");
  EXPECT_DOUBLE_EQ(updates.back().progress, 1.0);
  const auto isOf = [](std::string_view key) {
    return [key](const CleaningScanProgressUpdate& update) { return update.statusKey == key; };
  };
  EXPECT_EQ(std::ranges::count_if(updates, isOf("scan.status.appCaches")), 11);
  double furthest = 0;
  for (const auto& update : updates)
    if (isOf("scan.status.appCaches")(update)) furthest = std::max(furthest, update.progress);
  EXPECT_DOUBLE_EQ(furthest, 0.42);
  EXPECT_GE(updates.back().activity->inspectedItemCount, 21);

  std::size_t seen = 0;
  const auto cancelSoon = [&](const CleaningScanProgressUpdate& update) {
    const MutexLock lock(mutex);
    if (++seen == 4) control.cancel();
    EXPECT_LT(update.progress, 0.42);
  };
  EXPECT_EQ(home.scanner().scan({}, control, cancelSoon).error(), ScanFault::cancelled);
}

TEST(UserDirectoriesTests, believesOnlyFoldersBelowTheHome) {
  const FilePath home{"/home/me"};
  const std::vector<std::pair<std::string, std::optional<std::string>>> cases{
      {"XDG_DOWNLOAD_DIR=\"$HOME/Téléchargements\"", "/home/me/Téléchargements"},
      {"# comment\nXDG_DESKTOP_DIR=\"$HOME/Desktop\"\n  XDG_DOWNLOAD_DIR=\"/home/me/dl/\" ", "/home/me/dl"},
      {"XDG_DOWNLOAD_DIR=\"$HOME/a\"\nXDG_DOWNLOAD_DIR=\"$HOME/b\\\"c\"", "/home/me/b\"c"},
      {"XDG_DOWNLOAD_DIR=\"$HOME/\"", std::nullopt},
      {"XDG_DOWNLOAD_DIR=\"$HOME/..\"", std::nullopt},
      {"XDG_DOWNLOAD_DIR=\"$HOME/../you/x\"", std::nullopt},
      {"XDG_DOWNLOAD_DIR=\"/etc\"", std::nullopt},
      {"XDG_DOWNLOAD_DIR=\"relative\"", std::nullopt},
      {"XDG_DOWNLOAD_DIR=$HOME/a", std::nullopt},
      {"XDG_DOWNLOAD_DIR=\"$HOME/a", std::nullopt},
      {"XDG_DOWNLOAD_DIRECTORY=\"$HOME/a\"", std::nullopt},
      {"XDG_DOWNLOAD_DIR=\"\\", std::nullopt},
      {"", std::nullopt},
  };
  for (const auto& [text, expected] : cases) {
    const auto found = userDirectory(text, "XDG_DOWNLOAD_DIR", home);
    EXPECT_EQ(found.has_value(), expected.has_value()) << text;
    if (found && expected) {
      EXPECT_EQ(found->bytes, *expected);
    }
  }
}

}  // namespace
}  // namespace quorvane
