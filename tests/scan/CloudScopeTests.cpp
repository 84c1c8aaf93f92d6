#include "quorvane/scan/CloudScope.h"

#include "quorvane/platform/SystemPlatform.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace quorvane {
namespace {

class CloudScopeTest : public testing::Test {
 protected:
  TempFolder temp_;
  std::unique_ptr<FileSystem> fileSystem_ = makeSystemFileSystem();
};

TEST_F(CloudScopeTest, HoldsTheServicesFoldersOfAHome) {
  temp_.makeFolders("elsewhere");
  temp_.makeLink("Nextcloud", "elsewhere");
  const CloudScope scope(*fileSystem_, temp_.path(), HomeLayout::linux);
  for (const std::string relative : {"Dropbox", "Dropbox/a/b", "Dropbox (Work)/a", "OneDrive - Work", "Google Drive/x",
                                     "Nextcloud/x", "elsewhere", "elsewhere/x"})
    EXPECT_TRUE(scope.contains(temp_.at(relative))) << relative;
  for (const std::string relative : {"Downloads/x", "Dropboxes/x", ".cache/Dropbox", "elsewhere2", ".dropbox/x"})
    EXPECT_FALSE(scope.contains(temp_.at(relative))) << relative;
  EXPECT_FALSE(scope.contains(temp_.path()));
  EXPECT_FALSE(scope.contains({"/Dropbox"}));
}

TEST_F(CloudScopeTest, KnowsAHomeByItsLink) {
  temp_.makeFolders("u");
  temp_.makeLink("alias", "u");
  EXPECT_TRUE(CloudScope(*fileSystem_, temp_.at("alias"), HomeLayout::linux).contains(temp_.at("u/Dropbox/x")));
}

TEST_F(CloudScopeTest, HasFoldersOfItsOwnInAMacosHome) {
  const CloudScope scope(*fileSystem_, temp_.path(), HomeLayout::macos);
  EXPECT_TRUE(scope.contains(temp_.at("Library/CloudStorage/x")));
  EXPECT_TRUE(scope.contains(temp_.at("Library/Mobile Documents")));
  EXPECT_FALSE(scope.contains(temp_.at("Library/Caches/x")));
  EXPECT_FALSE(scope.contains(temp_.at("Dropbox/x")));
}

}  // namespace
}  // namespace quorvane
