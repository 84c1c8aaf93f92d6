#include "quorvane/scan/locations/LocationTable.h"
#include "quorvane/scan/locations/UserDirectories.h"
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
  home.expectVerdicts(
      {
          {".cache/thumbnails|/large/a.png", "safe reason.regenerableCache selected"},
          {".cache/unheard-of|/data", "review reason.unknownCache"},
          {".cache/a loose file", "review reason.unknownCache"},
          {".cache/tagged|/CACHEDIR.TAG", "safe reason.cacheTag selected", tag},
          {".cache/falsely-tagged|/CACHEDIR.TAG", "review reason.unknownCache", "Signature: something else"},
          {".cache/Bitwarden|/CACHEDIR.TAG", "blocked reason.sensitiveApplicationProtected", tag},
          {".cache/com.nordvpn.app|/data", "blocked reason.sensitiveApplicationProtected"},
          {".var/app/org.example.App/cache/tmp|/a", "review reason.unknownCache"},
          {".var/app/org.example.App/config/settings"},
          {".var/app/com.bitwarden.desktop/cache/thumbnails|/a", "blocked reason.sensitiveApplicationProtected"},
      },
      2 * day);
}

TEST_F(LinuxScanTests, findsTheOtherPlacesOfTheTable) {
  home.expectVerdicts(
      {
          {".m2/repository|/org/a.jar", "review reason.localRepository"},
          {".cache/JetBrains/Clion2024.1|/LocalHistory/changes", "review reason.localHistory"},
          {".cache/go-build|/fuzz/found", "review reason.costlyRebuild"},
          {".local/state/app/app.log", "safe reason.diagnosticLog selected"},
          {".local/state/app/000003.log"},
          {".local/state/app/logs/000003.log"},
          {".local/state/app/state.db"},
          {".local/state/app/logs/old", "review reason.diagnosticLog"},
          {".local/share/app/logs/app.log.1", "review reason.diagnosticLog"},
          {"projects/rust/target|/CACHEDIR.TAG", "safe reason.cacheTag selected", tag},
          {"projects/rust/src/main.rs"},
          {"projects/group/python/.mypy_cache|/CACHEDIR.TAG", "safe reason.cacheTag selected", tag},
          {"projects/python/.venv|/CACHEDIR.TAG", "review reason.environment", tag},
          {"projects/python/.venv|/pyvenv.cfg", "review reason.environment"},
          {"projects/a/b/c/too-deep/CACHEDIR.TAG", {}, tag},
          {"Downloads/tool.AppImage", "review reason.oldInstaller"},
          {"Downloads/tool.deb", "review reason.oldInstaller"},
          {"Downloads/paper.pdf"},
      },
      40 * day);
  home.age("projects/rust/target", 23h);
  home.age(".m2/repository", 23h);
  const ScanResult result = home.scan();
  EXPECT_EQ(verdictOf(itemAt(result, home.at("projects/rust/target"))), "blocked reason.recentDerivedDataProtected");
  EXPECT_EQ(verdictOf(itemAt(result, home.at(".m2/repository"))), "blocked reason.recentDerivedDataProtected");
}

TEST_F(LinuxScanTests, nobodyVouchesForAnotherKindOfThingUnderAKnownName) {
  home.expectVerdicts({{".cache/icon-cache.kcache", "safe reason.regenerableCache selected"},
                       {".cache/fontconfig", "review reason.unknownCache"},
                       {".cache/uv", "review reason.unknownCache"},
                       {".cache/real|/a", "review reason.unknownCache"},
                       {".cache/thumbnails", "review reason.unknownCache", {}, "real"},
                       {".cache/pip", "review reason.unknownCache", {}, "real"},
                       {".xsession-errors|/file", "review reason.unknownCache"},
                       {".local/state/app/app.log-20240101", "safe reason.diagnosticLog selected"},
                       {".local/state/app/app.log.1", "safe reason.diagnosticLog selected"},
                       {".local/state/app/keys.logins"},
                       {".local/state/app/.login-keyring"}},
                      40 * day);
}

TEST_F(LinuxScanTests, aTagDoesNotMakeSomebodysWorkDisposable) {
  home.expectVerdicts(
      {
          {"projects/tagged/CACHEDIR.TAG", {}, tag},
          {"projects/tagged/.git/HEAD"},
          {"projects/tagged/target|/CACHEDIR.TAG", "safe reason.cacheTag selected", tag},
          {"projects/several|/CACHEDIR.TAG", "review reason.unknownCache", tag},
          {"projects/several|/deep/one/.git", "review reason.unknownCache", "gitdir: elsewhere"},
          {".cache/work|/CACHEDIR.TAG", "review reason.unknownCache", tag},
          {".cache/work|/.hg/store", "review reason.unknownCache"},
      },
      40 * day);
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
  for (const char* path : {".cache/ignored/a", ".cache/ignored-not/a", ".cache/holds-ignored/keep/a",
                           ".cache/own/state/a", "Dropbox/Downloads/tool.deb"})
    home.write(path);
  home.age("", 40 * day);
  home.settings.folders.applicationSupport = home.at(".cache/own/state");
  home.folder.makeLink(".cache/ignored-link", "../precious");
  for (const char* path : {".cache/ignored", ".cache/holds-ignored/keep", ".cache/ignored-link"})
    ASSERT_TRUE(home.ignoreStore->add(home.at(path)).has_value());
  home.write(".config/user-dirs.dirs", "XDG_DOWNLOAD_DIR=\"$HOME/Dropbox/Downloads\"\n");
  const ScanResult result = home.scan();
  for (const char* path : {".cache/ignored", ".cache/holds-ignored", ".cache/ignored-link"})
    EXPECT_EQ(coverageAt(result, home.at(path)).reason, ScanCoverageReason::ignored) << path;
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
  const auto told = [](const char* text) {
    return userDirectory(text, "XDG_DOWNLOAD_DIR", {"/home/me"}).value_or(FilePath{"none"}).bytes;
  };
  const std::pair<const char*, const char*> cases[] = {
      {"XDG_DOWNLOAD_DIR=\"$HOME/Téléchargements\"", "/home/me/Téléchargements"},
      {"# comment\nXDG_DESKTOP_DIR=\"$HOME/Desktop\"\n  XDG_DOWNLOAD_DIR=\"/home/me/dl/\" ", "/home/me/dl"},
      {"XDG_DOWNLOAD_DIR=\"$HOME/a\"\nXDG_DOWNLOAD_DIR=\"$HOME/b\\\"c\"", "/home/me/b\"c"},
      {"", "none"},
      {"XDG_DOWNLOAD_DIRECTORY=\"$HOME/a\"", "none"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(told(text), expected) << text;
  for (const char* value :
       {"\"$HOME/\"", "\"$HOME/..\"", "\"$HOME/../you/x\"", "\"/etc\"", "\"relative\"", "$HOME/a", "\"$HOME/a", "\"\\"})
    EXPECT_EQ(told((std::string("XDG_DOWNLOAD_DIR=") + value).c_str()), "none") << value;
}

}  // namespace
}  // namespace quorvane
