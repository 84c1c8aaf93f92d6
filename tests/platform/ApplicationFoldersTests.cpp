#include "quorvane/platform/ApplicationFolders.h"

#include "quorvane/platform/posix/UserDatabase.h"

#include <gtest/gtest.h>

namespace quorvane {
namespace {

ApplicationFolders foldersOf(FolderRequest request) {
  request.applicationName = "Program";
  return applicationFolders(request).value();
}

TEST(ApplicationFoldersTests, theUsualFoldersLieInTheHome) {
  ApplicationFolders expected{{"/home/u"},
                              {"/home/u/.cache"},
                              {"/home/u/.config"},
                              {"/home/u/.local/share"},
                              {"/home/u/.local/state"},
                              {"/home/u/.local/share/Program"},
                              /*isConfined=*/false};
  EXPECT_EQ(foldersOf({.home = {}, .applicationSupport = {}, .environment = {{"HOME", "/home//u/"}}}), expected);
  expected.isConfined = true;
  // A home that was asked for is not mixed with the folders of the person who asks.
  EXPECT_EQ(foldersOf({.home = FilePath{"/home/u"},
                       .applicationSupport = {},
                       .environment = {{"HOME", "/home/me"}, {"XDG_CACHE_HOME", "/c"}, {"XDG_DATA_HOME", "/d"}}}),
            expected);
}

TEST(ApplicationFoldersTests, variablesMoveTheirFolderAlone) {
  const ApplicationFolders folders = foldersOf({.home = {},
                                                .applicationSupport = {},
                                                .environment = {{"HOME", "/home/u"},
                                                                {"XDG_CACHE_HOME", "/fast/../quick/cache/"},
                                                                {"XDG_CONFIG_HOME", ""},
                                                                {"XDG_DATA_HOME", "/data"},
                                                                {"XDG_STATE_HOME", "relative/state"}}});
  EXPECT_EQ(folders.cache.bytes, "/quick/cache");
  EXPECT_EQ(folders.configuration.bytes, "/home/u/.config");
  EXPECT_EQ(folders.data.bytes, "/data");
  EXPECT_EQ(folders.state.bytes, "/home/u/.local/state");
  EXPECT_EQ(folders.applicationSupport.bytes, "/data/Program");
}

TEST(ApplicationFoldersTests, ownStateMayBeElsewhere) {
  EXPECT_EQ(foldersOf({.home = FilePath{"/h"}, .applicationSupport = FilePath{"/own"}, .environment = {}})
                .applicationSupport.bytes,
            "/own");
}

TEST(ApplicationFoldersTests, withoutVariableTheUserDatabaseNamesTheHome) {
  const auto home = homeFromUserDatabase();
  if (!home) GTEST_SKIP() << "the user of this process is not in the user database";
  for (const char* value : {"", "relative"})
    EXPECT_EQ(foldersOf({.home = {}, .applicationSupport = {}, .environment = {{"HOME", value}}}).home,
              standardised(*home));
}

TEST(ApplicationFoldersTests, aRelativeHomeIsRefused) {
  for (const char* home : {"", "home/u"})
    EXPECT_EQ(applicationFolders({.home = FilePath{home}, .applicationSupport = {}, .environment = {}}).error(),
              FolderFault::homeNotAbsolute);
}

}  // namespace
}  // namespace quorvane
