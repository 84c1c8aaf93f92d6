#include "quorvane/scan/ScanSelectionPreflight.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace quorvane {
namespace {

using namespace std::chrono_literals;
using ScanSelectionPreflight::Demotion;

const Date now = dateFromTimestamp(1'800'000'000, 500);

ScanItem selectedItem(const std::string& path) {
  ScanItem item;
  item.url = {{path}};
  item.displayName = "shown";
  item.category = ScanCategory::browserCache;
  item.safety = SafetyLevel::safe;
  item.reasonKey = "reason.regenerableCache";
  item.size = 42;
  item.isSelected = true;
  item.snapshot = FileTreeSnapshot{{}, {path}, "digest"};
  return item;
}

struct Case {
  std::string path;
  bool isInUse;
  std::optional<std::chrono::nanoseconds> age;
  std::optional<Demotion> demotion;
};

ScanItem checkedAlone(const Case& given, const ScanItem& item,
                      const std::string& cachesRoot = "/home/u/Library/Caches") {
  const ScanSelectionPreflight::Observation observation{
      .now = now,
      .cachesRoot = {cachesRoot},
      .latestModification = [&](const FilePath& location) -> std::optional<Date> {
        EXPECT_EQ(location.bytes, given.path);
        if (!given.age) return std::nullopt;
        return now - *given.age;
      },
      .isInUse = [&](const FilePath&) { return given.isInUse; }};
  return ScanSelectionPreflight::checked({item}, observation).front();
}

TEST(ScanSelectionPreflightTests, demotesForTheFirstReasonThatApplies) {
  const std::string caches = "/home/u/Library/Caches/";
  for (const Case& given : std::vector<Case>{
           {caches + "x", false, std::nullopt, std::nullopt},
           {caches + "x", false, 11min, std::nullopt},
           {caches + "x", false, 600s, std::nullopt},
           {caches + "x", false, 600s - 1ns, Demotion::recentlyWritten},
           {caches + "x", false, 5min, Demotion::recentlyWritten},
           {caches + "x", false, -1h, Demotion::recentlyWritten},
           {caches + "x", true, 1h, Demotion::running},
           {caches + "x", true, 0s, Demotion::running},
           {caches + "com.apple.something", false, 1h, Demotion::systemService},
           {caches + "com.apple.something/", false, 1h, Demotion::systemService},
           {caches + "../Caches/./com.apple.x", false, 1h, Demotion::systemService},
           {caches + "com.apple.something", false, 0s, Demotion::recentlyWritten},
           {caches + "com.apple.something", true, 0s, Demotion::running},
           {caches + "com.applesauce", false, 1h, std::nullopt},
           {caches + "x/com.apple.y", false, 1h, std::nullopt},
           {"/home/u/Library/Logs/com.apple.y", false, 1h, std::nullopt},
       }) {
    const ScanItem before = selectedItem(given.path);
    ScanItem expected = before;
    if (given.demotion) {
      expected.safety = SafetyLevel::review;
      expected.isSelected = false;
      expected.reasonKey = "reason.preflight." + std::string(caseName(*given.demotion));
    }
    EXPECT_EQ(checkedAlone(given, before), expected) << given.path << " " << (given.age ? given.age->count() : -1);
  }
}

TEST(ScanSelectionPreflightTests, comparesTheCachesRootStandardised) {
  const Case given{"/h/c/com.apple.x", false, {}, {}};
  EXPECT_FALSE(checkedAlone(given, selectedItem(given.path), "/h/./d/../c/").isSelected);
}

TEST(ScanSelectionPreflightTests, bearsTheEndsOfTime) {
  for (const Date date : {Date::min(), Date::max()}) {
    const auto checked = ScanSelectionPreflight::checked(
        {selectedItem("/x")}, {.now = now,
                               .cachesRoot = {"/"},
                               .latestModification = [date](const FilePath&) { return date; },
                               .isInUse = [](const FilePath&) { return false; }});
    EXPECT_EQ(checked.front().isSelected, date == Date::min());
  }
}

TEST(ScanSelectionPreflightTests, leavesAloneWhatIsNotSelectedOrNotSafe) {
  const Case given{"/home/u/Library/Caches/com.apple.x", true, 0s, {}};
  for (const bool isSelected : {false, true})
    for (const SafetyLevel safety : allCases<SafetyLevel>()) {
      if (isSelected && safety == SafetyLevel::safe) continue;
      ScanItem item = selectedItem(given.path);
      item.isSelected = isSelected;
      item.safety = safety;
      EXPECT_EQ(checkedAlone(given, item), item) << caseName(safety);
    }
}

TEST(ScanSelectionPreflightTests, keepsTheOrder) {
  const std::vector<ScanItem> items = {selectedItem("/b"), selectedItem("/a"), selectedItem("/c")};
  const auto checked = ScanSelectionPreflight::checked(
      items, {.now = now,
              .cachesRoot = {"/"},
              .latestModification = [](const FilePath&) { return std::nullopt; },
              .isInUse = [](const FilePath& location) { return location.bytes == "/a"; }});
  ASSERT_EQ(checked.size(), 3U);
  EXPECT_EQ(checked[0], items[0]);
  EXPECT_EQ(checked[1].reasonKey, ScanSelectionPreflight::reasonKey(Demotion::running));
  EXPECT_EQ(checked[2], items[2]);
}

}  // namespace
}  // namespace quorvane
