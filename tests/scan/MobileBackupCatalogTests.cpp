#include "quorvane/scan/backups/MobileBackupCatalog.h"

#include "quorvane/platform/SystemPlatform.h"
#include "quorvane/scan/backups/PropertyList.h"
#include "tests/support/BinaryPropertyList.h"
#include "tests/support/FailingFileSystem.h"
#include "tests/support/ManualClock.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <tuple>

#include <sys/stat.h>
#include <unistd.h>

namespace quorvane {
namespace {

const Date today = *dateFromIsoText("2026-11-21T12:00:00Z");

std::string xml(const std::string& entries) { return "<plist version=\"1.0\"><dict>" + entries + "</dict></plist>"; }

std::string text(const std::string& key, const std::string& value) {
  return "<key>" + key + "</key><string>" + value + "</string>";
}

std::string date(const std::string& key, const std::string& value) {
  return "<key>" + key + "</key><date>" + value + "</date>";
}

/// A folder of backups.
class BackupShelf {
 public:
  struct Row {
    std::string name, device, backupDate, reason;
    bool isComplete = true;
  };

  /// A complete backup of a device; without a date or device when the text is empty.
  void add(const std::string& name, const std::string& device, const std::string& backupDate) const {
    std::string info = text("Device Name", "Name of " + device);
    if (!device.empty()) info += text("Target Identifier", device);
    if (!backupDate.empty()) info += date("Last Backup Date", backupDate);
    folder.write(name + "/Info.plist", xml(info));
    folder.write(name + "/Status.plist", binaryPropertyList(xml(text("SnapshotState", "finished"))));
    folder.write(name + "/Manifest.plist", binaryPropertyList(xml("<key>IsEncrypted</key><true/>")));
    folder.write(name + "/Manifest.db", "");
  }

  void addIncomplete(const std::string& name, const std::string& device, const std::string& backupDate) const {
    add(name, device, backupDate);
    write(name + "/Status.plist", xml(text("SnapshotState", "uploading")));
  }

  /// Makes a backup of each row, and expects these reasons and no others.
  void expectReasons(const std::vector<Row>& rows) {
    std::map<std::string, std::string> expected;
    for (const auto& [name, device, backupDate, reason, isComplete] : rows) {
      isComplete ? add(name, device, backupDate) : addIncomplete(name, device, backupDate);
      expected[name] = reason;
    }
    EXPECT_EQ(reasons(), expected);
  }

  void remove(const std::string& relative) const { ::unlink(folder.at(relative).bytes.c_str()); }

  void write(const std::string& relative, const std::string& content) const {
    remove(relative);
    folder.write(relative, content);
  }

  Outcome<std::vector<MobileBackupRecord>, PosixError> read() {
    return MobileBackupCatalog(*fileSystem, clock).records({folder.descriptor(), folder.path()});
  }

  std::map<std::string, std::string> reasons() {
    std::map<std::string, std::string> reasons;
    const auto records = read();
    EXPECT_TRUE(records);
    for (const MobileBackupRecord& record : *records) {
      EXPECT_TRUE(record.reasonKey.starts_with("backup.reason."));
      reasons[std::string(leafOf(record.url))] = record.reasonKey.substr(14);
    }
    return reasons;
  }

  TempFolder folder;
  ManualClock clock{today};
  std::unique_ptr<FileSystem> fileSystem = makeSystemFileSystem();
};

TEST(MobileBackupCatalogTests, readsWhatABackupSaysOfItself) {
  BackupShelf shelf;
  shelf.folder.write("a/Info.plist",
                     binaryPropertyList(xml(text("Display Name", "Shown") + text("Product Version", "17.1") +
                                            text("Unique Identifier", "U-1"))));
  shelf.folder.write("a/Status.plist", xml(date("Date", "2026-11-01T10:00:00Z") + text("SnapshotState", "finished") +
                                           "<key>IsEncrypted</key><false/>"));
  shelf.folder.write("a/Manifest.plist", xml(""));
  shelf.folder.write("a/Manifest.mbdb", "");
  shelf.add("b", "T-1", "2026-11-02T10:00:00Z");
  shelf.write("b/Status.plist", xml(date("Date", "2026-11-03T10:00:00Z") + text("SnapshotState", "finished")));

  const auto records = shelf.read();
  ASSERT_TRUE(records);
  ASSERT_EQ(records->size(), 2U);
  const MobileBackupMetadata& a = records->at(0).metadata;
  ASSERT_TRUE(a.metadataModifiedAt);
  EXPECT_EQ(*a.metadataModifiedAt, wholeSeconds(*a.metadataModifiedAt));
  const MobileBackupMetadata expected{
      "Shown", "U-1", "17.1", dateFromIsoText("2026-11-01T10:00:00Z"), false, true, a.metadataModifiedAt};
  EXPECT_EQ(records->at(0), (MobileBackupRecord{shelf.folder.at("a"), expected, "backup.reason.latest"}));
  const MobileBackupMetadata& b = records->at(1).metadata;
  EXPECT_EQ(b.deviceName, "Name of T-1");
  EXPECT_EQ(b.backupDate, dateFromIsoText("2026-11-02T10:00:00Z"));
  EXPECT_EQ(b.isEncrypted, true);
}

TEST(MobileBackupCatalogTests, isCompleteOnlyWithEverythingInPlace) {
  BackupShelf shelf;
  for (const char* name : {"whole", "noManifest", "noDatabase", "databaseIsAFolder", "noStatus"})
    shelf.add(name, "d", "2026-11-01T10:00:00Z");
  shelf.remove("noManifest/Manifest.plist");
  shelf.remove("noDatabase/Manifest.db");
  shelf.remove("databaseIsAFolder/Manifest.db");
  shelf.folder.makeFolders("databaseIsAFolder/Manifest.db");
  shelf.remove("noStatus/Status.plist");
  shelf.addIncomplete("unfinished", "d", "2026-11-01T10:00:00Z");
  const auto records = shelf.read();
  ASSERT_TRUE(records && records->size() == 6);
  for (const MobileBackupRecord& record : *records)
    EXPECT_EQ(record.metadata.isComplete, leafOf(record.url) == "whole") << record.url.bytes;
}

TEST(MobileBackupCatalogTests, keepsTheNewestOfEachDevice) {
  BackupShelf shelf;
  shelf.expectReasons({
      {"a1", "A", "2026-01-01T00:00:00Z", "older"},
      {"a2", "A", "2026-02-01T00:00:00Z", "latest"},
      {"a3", "A", "2026-02-01T00:00:00Z", "latest"},
      {"b1", "B", "2025-01-01T00:00:00Z", "latest"},
      {"c1", "C", "2026-11-21T11:00:00Z", "latest"},
      {"c2", "C", "2026-11-20T12:00:01Z", "recent"},
      {"c3", "C", "2026-11-20T12:00:00Z", "older"},
      {"nameless1", "", "2025-01-01T00:00:00Z", "latest"},
      {"nameless2", "", "2026-01-01T00:00:00Z", "latest"},
      {"undated", "A", "", "unknown"},
  });
}

TEST(MobileBackupCatalogTests, keepsTheNewestThatCanBeReliedUponToo) {
  BackupShelf shelf;
  shelf.expectReasons({
      {"a1", "A", "2026-01-01T00:00:00Z", "older"},
      {"a2", "A", "2026-02-01T00:00:00Z", "latest"},
      {"a3", "A", "2026-03-01T00:00:00Z", "older", /*isComplete=*/false},
      {"a4", "A", "2026-04-01T00:00:00Z", "latest", /*isComplete=*/false},
      {"b1", "B", "2026-01-01T00:00:00Z", "latest"},
      {"b2", "B", "2026-12-24T00:00:00Z", "recent"},
      {"b3", "B", "2026-12-25T00:00:00Z", "latest"},
      {"c1", "C", "2026-01-01T00:00:00Z", "latest", /*isComplete=*/false},
  });
  shelf.add("c2", "C", "2026-02-01T00:00:00Z");
  shelf.write("c2/Manifest.plist", "damaged");
  EXPECT_EQ(shelf.reasons()["c1"], "latest");
  EXPECT_EQ(shelf.reasons()["c2"], "unknown");
}

TEST(MobileBackupCatalogTests, believesOnlyRegularPropertyListsOfReasonableSize) {
  BackupShelf shelf;
  for (const char* name : {"link", "pipe", "folder", "huge", "damaged", "array", "status"})
    shelf.add(name, name, "2026-01-01T00:00:00Z");
  shelf.add("other", "other", "2026-01-01T00:00:00Z");
  shelf.folder.write("outside.plist",
                     xml(text("Target Identifier", "x") + date("Last Backup Date", "2026-01-01T00:00:00Z")));
  for (const char* name : {"link", "pipe", "folder"}) shelf.remove(std::string(name) + "/Info.plist");
  shelf.folder.makeLink("link/Info.plist", "../outside.plist");
  ASSERT_EQ(::mkfifo(shelf.folder.at("pipe/Info.plist").bytes.c_str(), 0600), 0);
  shelf.folder.makeFolders("folder/Info.plist");
  shelf.write("huge/Info.plist", xml("") + std::string(PropertyList::mostBytes, ' '));
  shelf.write("damaged/Info.plist", "bplist00damaged");
  shelf.write("array/Info.plist", "<plist version=\"1.0\"><array/></plist>");
  shelf.write("status/Status.plist", "damaged");
  shelf.folder.makeLink("alias", "other");
  shelf.folder.makeFolders("empty");
  for (const auto& [name, reason] : shelf.reasons()) EXPECT_EQ(reason, name == "other" ? "latest" : "unknown") << name;
  EXPECT_EQ(shelf.reasons().size(), 9u);
}

TEST(MobileBackupCatalogTests, neverTakesTheLastGoodBackupForAnOlderOne) {
  BackupShelf shelf;
  shelf.add("new", "A", "2026-02-01T00:00:00Z");
  shelf.add("old", "A", "2026-01-01T00:00:00Z");
  FailingFileSystem counting(*shelf.fileSystem);
  ASSERT_TRUE(MobileBackupCatalog(counting, shelf.clock).records({shelf.folder.descriptor(), shelf.folder.path()}));
  for (std::size_t call = 1; call <= counting.calls(); ++call) {
    FailingFileSystem failing(*shelf.fileSystem);
    failing.failAt(call);
    MobileBackupCatalog catalog(failing, shelf.clock);
    const auto records = catalog.records({shelf.folder.descriptor(), shelf.folder.path()});
    if (!records) continue;
    const auto& [newer, older] = std::tie(records->at(0), records->at(1));
    EXPECT_NE(newer.reasonKey, "backup.reason.older") << "call " << call;
    const bool isNewerProven = newer.metadata.isComplete && newer.reasonKey == "backup.reason.latest";
    EXPECT_TRUE(older.reasonKey != "backup.reason.older" || isNewerProven) << "call " << call;
  }
}

TEST(MobileBackupCatalogTests, offersForReviewOnlyWhatIsOlderByADay) {
  const auto reasonFor = [](const char* key, std::optional<Date> backupDate) {
    MobileBackupRecord record;
    record.metadata.backupDate = backupDate;
    record.reasonKey = key;
    return verdictOf(record, today);
  };
  using std::chrono::seconds;
  const ItemVerdict older{SafetyLevel::review, "backup.reason.older"};
  const ItemVerdict recent{SafetyLevel::blocked, "backup.reason.recent"};
  EXPECT_EQ(reasonFor("backup.reason.older", today - seconds(86'400)), older);
  EXPECT_EQ(reasonFor("backup.reason.older", Date::min()), older);
  EXPECT_EQ(reasonFor("backup.reason.older", today - seconds(86'399)), recent);
  EXPECT_EQ(reasonFor("backup.reason.older", Date::max()), recent);
  EXPECT_EQ(reasonFor("backup.reason.older", std::nullopt), recent);
  for (const char* key : {"backup.reason.latest", "backup.reason.recent", "backup.reason.unknown"})
    EXPECT_EQ(reasonFor(key, today - seconds(900'000)), (ItemVerdict{SafetyLevel::blocked, key}));
}

}  // namespace
}  // namespace quorvane
