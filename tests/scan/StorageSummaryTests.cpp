#include "quorvane/scan/StorageSummary.h"

#include "tests/support/ScanHome.h"

#include <gtest/gtest.h>

#include <sys/mount.h>

namespace quorvane {
namespace {

class StorageSummaryTests : public testing::Test {
 protected:
  StorageSummaryTests() {
    home.write("mine", std::string(20'000, 'x'));
    home.write("programs/one", std::string(50'000, 'x'));
  }

  StorageSnapshot summary() {
    ScanPauseControl control;
    return home.scanner().storageSummary(control, {}).value();
  }

  ScanHome home{HomeLayout::linux};
};

TEST_F(StorageSummaryTests, countsNothingTwice) {
  const StorageSnapshot all = summary();
  home.settings.applicationRoots = {home.at("programs"), home.at("absent")};
  const StorageSnapshot apart = summary();
  EXPECT_EQ(all.applications, 0);
  EXPECT_GE(apart.applications, 50'000);
  EXPECT_LT(apart.applications, 70'000);
  EXPECT_EQ(apart.userFiles + apart.applications, all.userFiles);
}

TEST_F(StorageSummaryTests, leavesOutWhatLiesOnAnotherVolume) {
  const std::string point = home.at("programs").bytes;
  if (::mount("none", point.c_str(), "tmpfs", 0, "size=1m") != 0) GTEST_SKIP() << "mounting is not permitted";
  home.write("programs/other", std::string(50'000, 'x'));
  home.settings.applicationRoots = {home.at("programs")};
  const StorageSnapshot snapshot = summary();
  ASSERT_EQ(::umount(point.c_str()), 0);
  EXPECT_EQ(snapshot.applications, 0);
  EXPECT_GE(snapshot.userFiles, 20'000);
}

}  // namespace
}  // namespace quorvane
