#include "tests/support/ScanHome.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>

#include <sys/stat.h>

namespace quorvane {
namespace {

using namespace std::chrono_literals;

constexpr auto day = 24h;

class MacScanTests : public testing::Test {
 protected:
  ScanHome home{HomeLayout::macos};
};

TEST_F(MacScanTests, classifiesEveryPlaceOfTheTable) {
  home.write("Library/Caches/org.example.notes/data");
  home.write("Library/Caches/com.google.Chrome/data");
  home.write("Library/Caches/org.example.research/data");
  home.write("Library/Caches/com.bitwarden.desktop/data");
  home.write("Library/Caches/Proton VPN/data");
  home.write("Library/Caches/com.apple.something/data");
  home.write("Library/Caches/loose file.db");
  home.write("Library/Logs/system.log");
  home.write("Library/Logs/net.tunnelblick.tunnelblick/client.log");
  home.write("Library/Developer/Xcode/Archives/App.xcarchive/Info.plist");
  home.write("Library/Developer/Xcode/Archives/2026-01-01/App.xcarchive/Info.plist");
  home.write(".codex/worktrees/broken/file");
  home.write("Library/Preferences/org.example.notes.plist");
  home.write("Documents/mine");
  home.age("", 40 * day);

  EXPECT_EQ(home.verdicts(),
            (std::map<std::string, std::string>{
                {"Library/Caches/org.example.notes", "safe reason.regenerableCache selected"},
                {"Library/Caches/com.google.Chrome", "safe reason.regenerableCache selected"},
                {"Library/Caches/org.example.research", "safe reason.regenerableCache selected"},
                {"Library/Caches/com.bitwarden.desktop", "blocked reason.sensitiveApplicationProtected"},
                {"Library/Caches/Proton VPN", "blocked reason.sensitiveApplicationProtected"},
                {"Library/Caches/com.apple.something", "review reason.preflight.systemService"},
                {"Library/Caches/loose file.db", "safe reason.regenerableCache selected"},
                {"Library/Logs/system.log", "safe reason.diagnosticLog selected"},
                {"Library/Logs/net.tunnelblick.tunnelblick", "blocked reason.sensitiveApplicationProtected"},
                {"Library/Developer/Xcode/Archives/App.xcarchive", "review reason.archiveMayBeNeeded"},
                {".codex/worktrees/broken", "review reason.aiWorktree"},
            }));

  const ScanResult result = home.scan();
  EXPECT_EQ(itemAt(result, home.at("Library/Caches/com.google.Chrome")).category, ScanCategory::browserCache);
  EXPECT_EQ(itemAt(result, home.at("Library/Caches/org.example.research")).category, ScanCategory::browserCache)
      << "the short fragments match anywhere in a name";
  EXPECT_EQ(itemAt(result, home.at("Library/Caches/org.example.notes")).category, ScanCategory::applicationCache);
  EXPECT_EQ(itemAt(result, home.at("Library/Caches/org.example.notes")).displayName, "notes");
  EXPECT_EQ(itemAt(result, home.at("Library/Logs/system.log")).displayName, "log");
  EXPECT_TRUE(std::ranges::is_sorted(result.items, [](const ScanItem& a, const ScanItem& b) {
    const auto step = [](ScanCategory c) {
      return c == ScanCategory::aiWorktree       ? 3
             : c == ScanCategory::developerCache ? 2
             : c == ScanCategory::logs           ? 1
                                                 : 0;
    };
    return step(a.category) < step(b.category);
  })) << "in the order of the steps";
}

TEST_F(MacScanTests, protectsWhatIsYoungerThanItsLimit) {
  struct Case {
    const char* path;
    std::chrono::seconds age;
    const char* verdict;  ///< empty: no item
  };
  const std::vector<Case> cases{
      {"Library/Caches/five minutes/f", 5min, "review reason.preflight.recentlyWritten"},
      {"Library/Caches/just ten minutes/f", 600s, "safe reason.regenerableCache selected"},
      {"Library/Caches/nearly ten minutes/f", 599s, "review reason.preflight.recentlyWritten"},
      {"Library/Caches/tomorrow/f", -day, "review reason.preflight.recentlyWritten"},
      {"Library/Developer/Xcode/DerivedData/App-a/f", 23h, "blocked reason.recentDerivedDataProtected"},
      {"Library/Developer/Xcode/DerivedData/App-b/f", 86'399s, "blocked reason.recentDerivedDataProtected"},
      {"Library/Developer/Xcode/DerivedData/App-c/f", 86'400s, "safe reason.buildArtifact selected"},
      {"Library/Developer/Xcode/DerivedData/App-d/f", 25h, "safe reason.buildArtifact selected"},
      {"Downloads/young.dmg", 29 * day, ""},
      {"Downloads/old.dmg", 31 * day, "review reason.oldInstaller"},
      {"Downloads/OLD.PKG", 31 * day, "review reason.oldInstaller"},
      {"Downloads/old.zip", 31 * day, ""},
      {"Downloads/a folder.iso/f", 31 * day, ""},
      {"Library/Containers/com.apple.mail/Data/Library/Mail Downloads/young/f", 29 * day, ""},
      {"Library/Containers/com.apple.mail/Data/Library/Mail Downloads/old/f", 31 * day,
       "review reason.oldMailDownload"},
  };
  for (const Case& each : cases) {
    home.write(each.path);
    std::string item = each.path;
    if (item.ends_with("/f")) item.resize(item.size() - 2);
    home.age(item, each.age);
  }
  const ScanResult result = home.scan();
  for (const Case& each : cases) {
    std::string path = each.path;
    if (path.ends_with("/f")) path.resize(path.size() - 2);
    EXPECT_EQ(hasItemAt(result, home.at(path)), *each.verdict != 0) << path;
    if (*each.verdict) {
      EXPECT_EQ(verdictOf(itemAt(result, home.at(path))), each.verdict) << path;
    }
  }
}

TEST_F(MacScanTests, anItemIsWhatWasMeasured) {
  home.write("Library/Caches/app/sub/file", std::string(100'000, 'x'));
  home.age("", 2 * day);
  const ScanResult result = home.scan();
  const ScanItem& item = itemAt(result, home.at("Library/Caches/app"));
  ASSERT_TRUE(item.snapshot.has_value());
  struct stat status {};
  ASSERT_EQ(::stat(home.at("Library/Caches/app").bytes.c_str(), &status), 0);
  EXPECT_EQ(item.snapshot->identity.inode, status.st_ino);
  EXPECT_EQ(item.snapshot->identity.kind, S_IFDIR);
  EXPECT_EQ(item.snapshot->canonicalPath, home.at("Library/Caches/app"));
  EXPECT_GE(item.size, 100'000);
  EXPECT_EQ(*scanResultFromJson(jsonText(result)), result);
  EXPECT_NE(home.scan().items[0].id, item.id) << "an identifier is fresh for every scan";
  EXPECT_EQ(home.scan().items[0].snapshot, item.snapshot) << "nothing changed, nothing differs";
}

TEST_F(MacScanTests, whatAProcessUsesIsForReview) {
  home.write("Library/Caches/open/sub/file");
  home.write("Library/Caches/openly/file");
  home.write("Library/Logs/stood-in/file");
  home.age("", 2 * day);
  home.processes.processes = std::vector<RunningProcess>{{.identifier = 1,
                                                          .program = "editor",
                                                          .isInspectable = true,
                                                          .workingFolder = home.at("Library/Logs/stood-in"),
                                                          .openPaths = {home.at("Library/Caches/open/sub/file")}}};
  EXPECT_EQ(home.verdicts(), (std::map<std::string, std::string>{
                                 {"Library/Caches/open", "review reason.preflight.running"},
                                 {"Library/Caches/openly", "safe reason.regenerableCache selected"},
                                 {"Library/Logs/stood-in", "review reason.preflight.running"},
                             }));
  EXPECT_EQ(home.processes.readings, 1) << "one index for the whole scan";
  home.processes.processes = failure(PosixError{EACCES});
  for (const auto& [path, verdict] : home.verdicts()) EXPECT_EQ(verdict, "review reason.preflight.running") << path;
}

TEST_F(MacScanTests, backupsAreForReviewOnlyWhenANewerOneStands) {
  const auto info = [](const char* date) {
    return std::string(
               "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>Device Name</key><string>Phone</string>"
               "<key>Target Identifier</key><string>one</string><key>Last Backup Date</key><date>") +
           date + "</date></dict></plist>";
  };
  const std::string backups = "Library/Application Support/MobileSync/Backup/";
  home.write(backups + "old/Info.plist", info("2020-01-01T00:00:00Z"));
  home.write(backups + "new/Info.plist", info("2021-01-01T00:00:00Z"));
  home.write(backups + "empty/file");
  home.write(backups + "loose");
  const ScanResult result = home.scan();
  EXPECT_EQ(result.items.size(), 3u);
  EXPECT_EQ(verdictOf(itemAt(result, home.at(backups + "old"))), "review backup.reason.older");
  EXPECT_EQ(verdictOf(itemAt(result, home.at(backups + "new"))), "blocked backup.reason.latest");
  EXPECT_EQ(verdictOf(itemAt(result, home.at(backups + "empty"))), "blocked backup.reason.unknown");
  EXPECT_EQ(itemAt(result, home.at(backups + "old")).displayName, "Phone");
  EXPECT_EQ(itemAt(result, home.at(backups + "old")).backupMetadata->deviceIdentifier, "one");
  EXPECT_EQ(itemAt(result, home.at(backups + "empty")).displayName, "empty");
}

TEST_F(MacScanTests, leftoversAreSafeOnlyWhereTheIdentifierProvesThem) {
  for (const char* path :
       {"Library/Caches/org.example.app/f", "Library/Preferences/org.example.app.plist",
        "Library/Saved Application State/org.example.app.savedState/f", "Library/WebKit/org.example.app/f",
        "Library/HTTPStorages/org.example.app/f", "Library/Cookies/org.example.app.binarycookies",
        "Library/Application Support/Example/f", "Library/Logs/Example/f", "Library/Containers/org.example.app/f",
        "Library/LaunchAgents/org.example.app.plist", "Library/LaunchAgents/org.example.app.helper.plist",
        "Library/LaunchAgents/org.example.application.plist", "Library/Caches/org.example.app.other/f"})
    home.write(path);
  ScanPauseControl control;
  const auto list = [&](const LeftoverQuery& query) {
    std::vector<std::string> lines;
    const auto items = home.scanner().leftovers(query, control);
    for (const ScanItem& item : *items)
      lines.push_back(std::string(relativeTo(home.at("Library"), item.url.path)) + ": " + verdictOf(item));
    return lines;
  };
  EXPECT_EQ(list({"org.example.app", "Example"}),
            (std::vector<std::string>{
                "Caches/org.example.app: safe reason.bundleIdentifierMatch selected",
                "Preferences/org.example.app.plist: safe reason.bundleIdentifierMatch selected",
                "Saved Application State/org.example.app.savedState: safe reason.bundleIdentifierMatch selected",
                "WebKit/org.example.app: safe reason.bundleIdentifierMatch selected",
                "HTTPStorages/org.example.app: safe reason.bundleIdentifierMatch selected",
                "Cookies/org.example.app.binarycookies: safe reason.bundleIdentifierMatch selected",
                "Application Support/Example: blocked reason.applicationOwnershipUnverified",
                "Logs/Example: blocked reason.applicationOwnershipUnverified",
                "Containers/org.example.app: review reason.applicationContainerMatch",
                "LaunchAgents/org.example.app.helper.plist: blocked reason.launchAgentProtected",
                "LaunchAgents/org.example.app.plist: blocked reason.launchAgentProtected",
            }));
  for (const char* hostile : {"", ".", "..", "../Caches", "a/b"})
    EXPECT_TRUE(list({hostile, "Example"}).empty()) << hostile;
  for (const std::string& line : list({"org.example.app", "Tailscale"}))
    EXPECT_TRUE(line.ends_with(": blocked reason.sensitiveApplicationProtected")) << line;
}

}  // namespace
}  // namespace quorvane
