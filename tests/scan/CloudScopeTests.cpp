#include "quorvane/scan/CloudScope.h"

#include "quorvane/platform/SystemPlatform.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace quorvane {
namespace {

class CloudScopeTests : public testing::Test {
 protected:
  TempFolder temp_;
  std::unique_ptr<FileSystem> fileSystem_ = makeSystemFileSystem();
};

TEST_F(CloudScopeTests, holdsTheServicesFoldersOfAHome) {
  temp_.makeFolders("elsewhere");
  temp_.makeLink("Nextcloud", "elsewhere");
  const CloudScope scope(*fileSystem_, temp_.path(), HomeLayout::linux);
  for (const std::string relative : {"Dropbox", "Dropbox/a/b", "Dropbox (Work)/a", "OneDrive - Work", "Google Drive/x",
                                     "Nextcloud/x", "elsewhere", "elsewhere/x"})
    EXPECT_TRUE(scope.touches(temp_.at(relative))) << relative;
  for (const std::string relative : {"Downloads/x", "Dropboxes/x", ".cache/Dropbox", "elsewhere2", ".dropbox/x"})
    EXPECT_FALSE(scope.touches(temp_.at(relative))) << relative;
  EXPECT_TRUE(scope.touches(temp_.path())) << "what holds one takes it along";
  EXPECT_FALSE(scope.touches({"/Dropbox"}));
}

TEST_F(CloudScopeTests, knowsAHomeByItsLink) {
  temp_.makeFolders("u");
  temp_.makeLink("alias", "u");
  EXPECT_TRUE(CloudScope(*fileSystem_, temp_.at("alias"), HomeLayout::linux).touches(temp_.at("u/Dropbox/x")));
}

TEST_F(CloudScopeTests, hasFoldersOfItsOwnInAMacosHome) {
  const CloudScope scope(*fileSystem_, temp_.path(), HomeLayout::macos);
  EXPECT_TRUE(scope.touches(temp_.at("Library/CloudStorage/x")));
  EXPECT_TRUE(scope.touches(temp_.at("Library/Mobile Documents")));
  EXPECT_FALSE(scope.touches(temp_.at("Library/Caches/x")));
  EXPECT_FALSE(scope.touches(temp_.at("Dropbox/x")));
}

}  // namespace
}  // namespace quorvane
