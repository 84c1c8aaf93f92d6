#include "quorvane/base/Json.h"
#include "quorvane/core/ScanResult.h"
#include "quorvane/core/StorageSnapshot.h"

#include <gtest/gtest.h>

#include <string>

namespace quorvane {
namespace {

ScanItem plainItem() {
  return {.id = *uuidFromText("6F9619FF-8B86-4011-B42D-00C04FC964FF"),
          .url = {{"/home/u/.cache/\xFFx"}},
          .displayName = "x",
          .category = ScanCategory::browserCache,
          .safety = SafetyLevel::safe,
          .reasonKey = "reason.regenerableCache",
          .size = 4096,
          .isSelected = true,
          .snapshot = {},
          .backupMetadata = {}};
}

ScanItem fullItem() {
  ScanItem item = plainItem();
  item.snapshot = FileTreeSnapshot{{-1, UINT64_MAX, 0x4000, -5, 999'999'999}, {"/home/u/.cache/\xFFx"}, "ab"};
  item.backupMetadata = MobileBackupMetadata{.deviceName = "Phone",
                                             .deviceIdentifier = {},
                                             .productVersion = "17.1",
                                             .backupDate = dateFromTimestamp(1'000'000'000, 0),
                                             .isEncrypted = false,
                                             .isComplete = true,
                                             .metadataModifiedAt = {}};
  return item;
}

ScanResult fullResult() {
  ScanCoverageEntry entry{.path = {"/home/u/.var/app/*/cache"},
                          .category = ScanCategory::applicationCache,
                          .status = ScanCoverageStatus::partial,
                          .reason = ScanCoverageReason::permissionDenied,
                          .itemCount = 2,
                          .unreadablePaths = {{"/home/u/.cache/\xFF"}},
                          .notes = {{FilePath{"/home/u/w"}, "note.worktreeLocked", 3, {"a", "b"}}}};
  return {.startedAt = dateFromTimestamp(1'000'000'000, 0),
          .finishedAt = dateFromTimestamp(1'000'000'007, 0),
          .items = {plainItem(), fullItem()},
          .unreadablePaths = std::vector<FilePath>{{"/home/u/.cache/locked"}},
          .coverage = ScanCoverageLedger{{entry}, {{{}, "notice.uninspectableProcesses", {}, {"ssh-agent"}}}}};
}

TEST(ScanResultJsonTests, readsBackWhatItWrote) {
  ScanResult result = fullResult();
  EXPECT_EQ(scanResultFromJson(jsonText(result)), result);
  result.unreadablePaths.reset();
  result.coverage.reset();
  EXPECT_EQ(scanResultFromJson(jsonText(result)), result);
  EXPECT_FALSE(toJson(result).contains("coverage"));
}

TEST(ScanResultJsonTests, hasExactlyTheKeysOfItsFields) {
  const Json json = toJson(fullResult());
  const Json& item = json["items"][1];
  EXPECT_EQ(item.size(), 10U);
  EXPECT_EQ(toJson(plainItem()).size(), 8U);
  EXPECT_EQ(item["url"], "file:///home/u/.cache/%FFx");
  EXPECT_EQ(item["category"], "browserCache");
  EXPECT_EQ(item["snapshot"]["identity"]["inode"], UINT64_MAX);
  EXPECT_FALSE(item["backupMetadata"].contains("deviceIdentifier"));
  EXPECT_EQ(toJson(StorageSnapshot{1, 2, 3, 4, true}),
            Json::parse(R"({"total":1,"available":2,"applications":3,"userFiles":4,"isPartial":true})"));
}

TEST(ScanResultJsonTests, refusesAnUnknownCategoryOrSafety) {
  for (const std::string member : {"category", "safety"}) {
    Json json = toJson(fullResult());
    json["items"][1][member] = "harmless";
    EXPECT_EQ(scanResultFromJson(json.dump()).error(), (JsonError{JsonFault::unknownCase, "items.1." + member}));
  }
}

TEST(MobileBackupMetadataTests, isReadableWithADateAtTheEndOfItsReach) {
  MobileBackupMetadata metadata;
  metadata.metadataModifiedAt = dateFromTimestamp(INT64_MIN, 0);
  EXPECT_TRUE(fromJson<MobileBackupMetadata>(toJson(metadata)));
}

}  // namespace
}  // namespace quorvane
