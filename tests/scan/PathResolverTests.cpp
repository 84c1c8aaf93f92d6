#include "quorvane/scan/policy/PathResolver.h"

#include "quorvane/platform/SystemPlatform.h"
#include "tests/support/FailingFileSystem.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <memory>
#include <string>

namespace quorvane {
namespace {

std::string told(const Outcome<FilePath, PosixError>& outcome) {
  return outcome ? outcome->bytes : "error " + std::to_string(outcome.error().code);
}

class PathResolverTests : public testing::Test {
 protected:
  PathResolverTests() {
    temp.write("home/.config/Slack/Cache/a", "a");
    temp.write("home/file", "a");
    temp.makeFolders("home/.local/share");
    temp.makeLink("home/.cache", "../disk/cache");
    temp.makeFolders("disk/cache/pip");
    temp.makeLink("home/dangling", "../gone/folder");
    temp.makeLink("home/circle", "circle");
    temp.makeLink("home/out", "/");
  }

  TempFolder temp;
  std::unique_ptr<FileSystem> real = makeSystemFileSystem();
  FailingFileSystem fileSystem{*real};
};

TEST_F(PathResolverTests, saysWhatTheFileSystemSays) {
  PathResolver resolver(fileSystem);
  for (const char* relative :
       {"", "home", "home/.config/Slack/Cache", "home/.config/Slack/gone/deeper", "home/.gone/a/b", "home/.cache",
        "home/.cache/pip", "home/.cache/gone/a", "home/file", "home/file/below", "home/dangling", "home/dangling/below",
        "home/circle", "home/circle/below", "home/out/usr", "home/.local/share"}) {
    const FilePath path = standardised(temp.at(relative));
    EXPECT_EQ(told(resolver.resolved(path)), told(real->resolved(path))) << relative;
    EXPECT_EQ(told(resolver.resolved(path)), told(real->resolved(path))) << relative << " again";
  }
  EXPECT_EQ(told(resolver.resolved({"/"})), told(real->resolved({"/"})));
}

TEST_F(PathResolverTests, asksNothingBelowAMissingFolder) {
  PathResolver resolver(fileSystem);
  EXPECT_TRUE(resolver.resolved(temp.at("home/.gone")).has_value());
  const std::size_t before = fileSystem.calls();
  for (int i = 0; i < 100; ++i)
    EXPECT_TRUE(resolver.resolved(temp.at("home/.gone/" + std::to_string(i) + "/cache")).has_value());
  EXPECT_EQ(fileSystem.calls(), before);
}

TEST_F(PathResolverTests, asksTheLongWayWhereItCannotLook) {
  const FilePath path = temp.at("home/.config/Slack/Cache");
  fileSystem.countOnly({FileCall::openRealFolder, FileCall::statusOfName});
  fileSystem.failAt(1, FaultSpan::fromThereOn, EACCES);
  EXPECT_EQ(told(PathResolver(fileSystem).resolved(path)), told(real->resolved(path)));
}

}  // namespace
}  // namespace quorvane
