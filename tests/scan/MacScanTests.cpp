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
  home.expectVerdicts(
      {
          {"Library/Caches/org.example.notes|/data", "safe reason.regenerableCache selected"},
          {"Library/Caches/com.google.Chrome|/data", "safe reason.regenerableCache selected"},
          {"Library/Caches/org.example.research|/data", "safe reason.regenerableCache selected"},
          {"Library/Caches/com.bitwarden.desktop|/data", "blocked reason.sensitiveApplicationProtected"},
          {"Library/Caches/Proton VPN|/data", "blocked reason.sensitiveApplicationProtected"},
          {"Library/Caches/com.apple.something|/data", "review reason.preflight.systemService"},
          {"Library/Caches/loose file.db", "safe reason.regenerableCache selected"},
          {"Library/Logs/system.log", "safe reason.diagnosticLog selected"},
          {"Library/Logs/net.tunnelblick.tunnelblick|/client.log", "blocked reason.sensitiveApplicationProtected"},
          {"Library/Developer/Xcode/Archives/App.xcarchive|/Info.plist", "review reason.archiveMayBeNeeded"},
          {"Library/Developer/Xcode/Archives/2026-01-01/App.xcarchive/Info.plist"},
          {".codex/worktrees/broken|/file", "review reason.aiWorktree"},
          {"Library/Preferences/org.example.notes.plist"},
          {"Documents/mine"},
      },
      40 * day);

  const ScanResult result = home.scan();
  const ScanItem& notes = itemAt(result, home.at("Library/Caches/org.example.notes"));
  EXPECT_EQ(notes.displayName, "notes");
  EXPECT_EQ(notes.category, ScanCategory::applicationCache);
  EXPECT_EQ(itemAt(result, home.at("Library/Caches/com.google.Chrome")).category, ScanCategory::browserCache);
  EXPECT_EQ(itemAt(result, home.at("Library/Caches/org.example.research")).category, ScanCategory::browserCache)
      << "the short fragments match anywhere in a name";
  std::vector<ScanCategory> order;
  for (const ScanItem& item : result.items)
    if (item.category != ScanCategory::browserCache && (order.empty() || order.back() != item.category))
      order.push_back(item.category);
  EXPECT_EQ(order, (std::vector{ScanCategory::applicationCache, ScanCategory::logs, ScanCategory::developerCache,
                                ScanCategory::aiWorktree}));
}

TEST_F(MacScanTests, protectsWhatIsYoungerThanItsLimit) {
  struct Case {
    std::string path;
    std::chrono::seconds age;
    std::string verdict;  ///< empty: no item
  };
  const std::string caches = "Library/Caches/", derived = "Library/Developer/Xcode/DerivedData/App-",
                    mail = "Library/Containers/com.apple.mail/Data/Library/Mail Downloads/";
  std::map<std::string, std::string> expected;
  for (const auto& [path, age, verdict] : std::vector<Case>{
           {caches + "just ten minutes", 600s, "safe reason.regenerableCache selected"},
           {caches + "nearly ten minutes", 599s, "review reason.preflight.recentlyWritten"},
           {caches + "tomorrow", -day, "review reason.preflight.recentlyWritten"},
           {derived + "b", 86'399s, "blocked reason.recentDerivedDataProtected"},
           {derived + "c", 86'400s, "safe reason.buildArtifact selected"},
           {"Downloads/young.dmg", 29 * day, ""},
           {"Downloads/old.dmg", 31 * day, "review reason.oldInstaller"},
           {"Downloads/OLD.PKG", 31 * day, "review reason.oldInstaller"},
           {"Downloads/old.zip", 31 * day, ""},
           {"Downloads/a folder.iso", 31 * day, ""},
           {mail + "young", 29 * day, ""},
           {mail + "old", 31 * day, "review reason.oldMailDownload"},
       }) {
    home.write(path.starts_with("Downloads") && !path.ends_with(".iso") ? path : path + "/f");
    home.age(path, age);
    if (!verdict.empty()) expected[path] = verdict;
  }
  EXPECT_EQ(home.verdicts(), expected);
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
  home.processes.processes = std::vector<RunningProcess>{{.identifier = 1,
                                                          .program = "editor",
                                                          .isInspectable = true,
                                                          .workingFolder = home.at("Library/Logs/stood-in"),
                                                          .openPaths = {home.at("Library/Caches/open/sub/file")}}};
  home.expectVerdicts({{"Library/Caches/open|/sub/file", "review reason.preflight.running"},
                       {"Library/Caches/openly|/file", "safe reason.regenerableCache selected"},
                       {"Library/Logs/stood-in|/file", "review reason.preflight.running"}},
                      2 * day);
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
  home.expectVerdicts({{backups + "old|/Info.plist", "review backup.reason.older", info("2020-01-01T00:00:00Z")},
                       {backups + "new|/Info.plist", "blocked backup.reason.latest", info("2021-01-01T00:00:00Z")},
                       {backups + "empty|/file", "blocked backup.reason.unknown"},
                       {backups + "loose"}},
                      day);
  const ScanResult result = home.scan();
  const ScanItem& old = itemAt(result, home.at(backups + "old"));
  EXPECT_EQ(old.displayName, "Phone");
  EXPECT_EQ(old.backupMetadata->deviceIdentifier, "one");
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
