// Items of every kind that a file system permits, on their way to the Trash and back.

#include "tests/support/HostileTree.h"

#include "tests/support/CleaningHome.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace quorvane {
namespace {

using testing::IsEmpty;

TEST(HostileTreeTests, comesBackByteForByteAndAttributeForAttribute) {
  CleaningHome home;
  makeHostileTree(home.folder, "t");
  makeDeepTree(home.folder, "t/deep", 700);
  home.write("t/kept private/file", "x");
  home.write("t/of all users", "x");
  ASSERT_EQ(::chmod(home.at("t/kept private").bytes.c_str(), 0500), 0);
  ASSERT_EQ(::chmod(home.at("t/of all users").bytes.c_str(), 06777), 0);
  if (::geteuid() == 0) {
    ASSERT_EQ(::lchown(home.at("t/dangling").bytes.c_str(), 12345, 23456), 0);
    ASSERT_EQ(::chmod(home.at("t/kept private").bytes.c_str(), 0), 0);
  }
  home.age("t/sub", std::chrono::hours(10'000));

  std::vector<std::string> parts;
  for (const std::string& name : home.folder.names("t")) parts.push_back("t/" + name);
  for (const auto& items : {std::vector<std::string>{"t"}, parts}) {
    TreeListing before = listingOf(home.at("t")), after;
    const auto requests = home.requests(items);
    const RemovalReport report = home.remove(requests);
    EXPECT_THAT(report.failures, IsEmpty()) << testing::PrintToString(fates(home, requests, report));
    for (const std::string& item : items) EXPECT_FALSE(home.hasEntry(item)) << item;
    EXPECT_EQ(home.folder.names(".local/share/Trash/files").size(), items.size());
    std::vector<RecoveryReference> references;
    for (const CleaningHistoryEntry& entry : report.entries) references.push_back({entry.id, entry.items[0].id});
    EXPECT_EQ(home.history.restore(references, {})->result.restoredCount, std::ssize(items));
    after = listingOf(home.at("t"));
    if (items.size() > 1) before.erase(""), after.erase("");  // names left it and came again
    EXPECT_EQ(before, after);
    EXPECT_THAT(home.folder.names(".local/share/Trash/info"), IsEmpty());
  }
}

}  // namespace
}  // namespace quorvane
