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
  std::optional<Date> written;
  std::optional<Demotion> demotion;
};

ScanItem checkedAlone(const Case& given, const ScanItem& item) {
  const ScanSelectionPreflight::Observation observation{.now = now,
                                                        .cachesRoot = {"/home/u/./Library/x/../Caches/"},
                                                        .latestModification =
                                                            [&](const FilePath& location) {
                                                              EXPECT_EQ(location.bytes, given.path);
                                                              return given.written;
                                                            },
                                                        .isInUse = [&](const FilePath&) { return given.isInUse; }};
  return ScanSelectionPreflight::checked({item}, observation).front();
}

TEST(ScanSelectionPreflightTests, demotesForTheFirstReasonThatApplies) {
  const std::string caches = "/home/u/Library/Caches/";
  for (const Case& given : std::vector<Case>{
           {caches + "x", false, std::nullopt, std::nullopt},
           {caches + "x", false, now - 11min, std::nullopt},
           {caches + "x", false, now - 600s, std::nullopt},
           {caches + "x", false, now - (600s - 1ns), Demotion::recentlyWritten},
           {caches + "x", false, now - 5min, Demotion::recentlyWritten},
           {caches + "x", false, now + 1h, Demotion::recentlyWritten},
           {caches + "x", true, now - 1h, Demotion::running},
           {caches + "x", true, now, Demotion::running},
           {caches + "com.apple.something", false, now - 1h, Demotion::systemService},
           {caches + "com.apple.something/", false, now - 1h, Demotion::systemService},
           {caches + "../Caches/./com.apple.x", false, now - 1h, Demotion::systemService},
           {caches + "com.apple.something", false, now, Demotion::recentlyWritten},
           {caches + "com.apple.something", true, now, Demotion::running},
           {caches + "com.applesauce", false, now - 1h, std::nullopt},
           {caches + "x/com.apple.y", false, now - 1h, std::nullopt},
           {"/home/u/Library/Logs/com.apple.y", false, now - 1h, std::nullopt},
           {caches + "x", false, Date::min(), std::nullopt},
           {caches + "x", false, Date::max(), Demotion::recentlyWritten},
       }) {
    const ScanItem before = selectedItem(given.path);
    ScanItem expected = before;
    if (given.demotion) {
      expected.safety = SafetyLevel::review;
      expected.isSelected = false;
      expected.reasonKey = "reason.preflight." + std::string(caseName(*given.demotion));
    }
    EXPECT_EQ(checkedAlone(given, before), expected) << given.path;
  }
}

TEST(ScanSelectionPreflightTests, leavesAloneWhatIsNotSelectedOrNotSafe) {
  const Case given{"/home/u/Library/Caches/com.apple.x", true, now, {}};
  for (const bool isSelected : {false, true})
    for (const SafetyLevel safety : allCases<SafetyLevel>()) {
      if (isSelected && safety == SafetyLevel::safe) continue;
      ScanItem item = selectedItem(given.path);
      item.isSelected = isSelected;
      item.safety = safety;
      EXPECT_EQ(checkedAlone(given, item), item) << caseName(safety);
    }
}

}  // namespace
}  // namespace quorvane
