#include "quorvane/scan/CleaningSafetyPolicy.h"

#include "quorvane/platform/SystemPlatform.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace quorvane {
namespace {

class CleaningSafetyPolicyTests : public testing::Test {
 protected:
  bool macosAllows(const std::string& location) {
    return CleaningSafetyPolicy(*fileSystem_, macosCleaningRules(home_)).allowsCleaning({location});
  }
  bool macosAllowsInHome(const std::string& relative) { return macosAllows(joined(home_, relative).bytes); }

  ApplicationFolders defaultFolders() const {
    return {.home = home_,
            .cache = joined(home_, ".cache"),
            .configuration = joined(home_, ".config"),
            .data = joined(home_, ".local/share"),
            .state = joined(home_, ".local/state"),
            .applicationSupport = joined(home_, ".local/share/Quorvane")};
  }
  /// The kinds of root that the tables of a Linux home have.
  static std::vector<CleaningRoot> rootsOf(const ApplicationFolders& folders) {
    std::vector<CleaningRoot> roots = {{folders.cache}, {joined(folders.state, "app/logs")}};
    for (const std::string root : {"Downloads", ".codex/worktrees", ".var/app/*/cache", "snap/*/common/.cache"})
      roots.push_back({joined(folders.home, root)});
    roots.push_back({joined(folders.home, ".npm/_cacache"), /*includesItself=*/true});
    return roots;
  }
  bool linuxAllows(const ApplicationFolders& folders, const std::string& location) {
    return CleaningSafetyPolicy(*fileSystem_, linuxCleaningRules(folders, rootsOf(folders))).allowsCleaning({location});
  }
  bool linuxAllowsInHome(const std::string& relative) {
    return linuxAllows(defaultFolders(), joined(home_, relative).bytes);
  }

  TempFolder temp_;
  FilePath home_ = temp_.at("Users/u");
  std::unique_ptr<FileSystem> fileSystem_ = makeSystemFileSystem();
};

struct Case {
  std::string location;
  bool isAllowed;
};

TEST_F(CleaningSafetyPolicyTests, allowsWhatLiesStrictlyInsideTheMacosRoots) {
  for (const std::string root :
       {"Library/Caches", "Library/Logs", "Library/Developer/Xcode/DerivedData", "Library/Developer/Xcode/Archives",
        "Library/Saved Application State", "Library/WebKit", "Library/HTTPStorages", "Library/Cookies",
        "Library/Preferences", "Library/Application Support", "Library/Containers", "Library/LaunchAgents", "Downloads",
        ".codex/worktrees", ".claude/worktrees", ".cursor/worktrees"}) {
    EXPECT_FALSE(macosAllowsInHome(root)) << root;
    EXPECT_FALSE(macosAllowsInHome(root + "/")) << root;
    EXPECT_TRUE(macosAllowsInHome(root + "/x")) << root;
    EXPECT_TRUE(macosAllowsInHome(root + "/x/y")) << root;
    EXPECT_FALSE(macosAllowsInHome(root + "x/y")) << root;
  }
}

TEST_F(CleaningSafetyPolicyTests, protectsFoldersOfTheMacosHomeAndSystem) {
  for (const std::string location : {"/", "/Applications", "/Library", "/System", "/Users", "/a/b", "",
                                     "Library/Caches/x", "/Applications/A.app/Contents"})
    EXPECT_FALSE(macosAllows(location)) << location;
  EXPECT_FALSE(macosAllows(std::string("/a\0b/c/d", 8)));
  for (const std::string relative : {"", "Library", "Documents", "Desktop", "Documents/x", "Library/x", "Movies/x",
                                     "Library/Caches/../x", "Library/Caches/x/..", "Library/Caches/x/../../Mail"})
    EXPECT_FALSE(macosAllowsInHome(relative)) << relative;
  EXPECT_TRUE(macosAllowsInHome("Documents/../Library/Caches/./x"));
}

TEST_F(CleaningSafetyPolicyTests, allowsOnlyMailDownloadsOfTheMailContainer) {
  const std::string mail = "Library/Containers/com.apple.mail";
  for (const auto& [location, isAllowed] : std::vector<Case>{
           {mail, false},
           {mail + "/x", false},
           {mail + "/Data/Library/Caches/x", false},
           {mail + "/Data/Library/Mail Downloads", false},
           {mail + "/Data/Library/Mail Downloads/x", true},
           {mail + "/Data/Library/Mail Downloads/x/y", true},
           {mail + "/Data/Library/Mail Downloads/../Mail", false},
           {mail + "/Data/Library/Mail Downloads 2/x", false},
           {mail + "box/x", true},  // another container
       })
    EXPECT_EQ(macosAllowsInHome(location), isAllowed) << location;
}

TEST_F(CleaningSafetyPolicyTests, judgesWhereLinksLead) {
  const std::string mail = "Library/Containers/com.apple.mail/Data/Library/";
  temp_.makeFolders("Users/u/" + mail + "Mail Downloads");
  temp_.makeFolders("Users/u/" + mail + "Mail");
  temp_.makeFolders("Users/u/Library/Caches");
  temp_.makeFolders("Users/u/Documents/d");
  temp_.makeLink("Users/u/" + mail + "Mail Downloads/out", "../Mail");
  temp_.makeLink("Users/u/Library/Caches/out", home_.bytes + "/Documents/d");
  temp_.makeLink("Users/u/Library/Caches/intoMail", home_.bytes + "/" + mail + "Mail");
  temp_.makeLink("Users/u/Library/Caches/loop", "loop");
  temp_.makeLink("Users/u/Documents/in", home_.bytes + "/Library/Caches");
  temp_.makeLink("Users/alias", "u");
  for (const auto& [location, isAllowed] : std::vector<Case>{
           {mail + "Mail Downloads/out", false},
           {mail + "Mail Downloads/out/x", false},
           {"Library/Caches/out", false},
           {"Library/Caches/out/x", false},
           {"Library/Caches/intoMail/x", false},
           {"Library/Caches/loop", false},
           {"Documents/in/x", true},
       })
    EXPECT_EQ(macosAllowsInHome(location), isAllowed) << location;
  EXPECT_TRUE(macosAllows(temp_.at("Users/alias/Library/Caches/x").bytes));
  home_ = temp_.at("Users/alias");
  EXPECT_TRUE(macosAllowsInHome("Library/Caches/x"));
  EXPECT_FALSE(macosAllowsInHome("Library/Caches/out"));
}

TEST_F(CleaningSafetyPolicyTests, allowsWhatLiesInsideTheLinuxRoots) {
  for (const auto& [location, isAllowed] : std::vector<Case>{
           {".cache", false},
           {".cache/x", true},
           {".cache/x/y", true},
           {".cachex/y", false},
           {"Downloads", false},
           {"Downloads/old.deb", true},
           {".codex/worktrees", false},
           {".codex/worktrees/w", true},
           {".local/state/app/logs/1.log", true},
           {".local/state/app/logs", false},
           {".local/state/app", false},
           {".var/app/org.x.Y/cache", false},
           {".var/app/org.x.Y/cache/z", true},
           {".var/app/org.x.Y", false},
           {".var/app/org.x.Y/config/z", false},
           {".var/app/a/b/cache/z", false},
           {"snap/x/common/.cache/y", true},
           {"snap/x/current/.cache/y", false},
           {".npm/_cacache", true},
           {".npm/_cacache/index", true},
           {".npm", false},
           {".npm/_cacache/..", false},
       })
    EXPECT_EQ(linuxAllowsInHome(location), isAllowed) << location;
}

TEST_F(CleaningSafetyPolicyTests, protectsFoldersOfTheLinuxHomeAndSystem) {
  for (const std::string relative : {"",
                                     ".config",
                                     ".config/x",
                                     ".local",
                                     ".local/share",
                                     ".local/share/x",
                                     ".local/state",
                                     ".local/share/Quorvane/x",
                                     "Documents",
                                     "Documents/x",
                                     "Desktop",
                                     "Pictures",
                                     "Music",
                                     "Videos",
                                     "Public",
                                     "Templates",
                                     ".var",
                                     ".var/app",
                                     "snap",
                                     ".ssh",
                                     ".ssh/id",
                                     ".gnupg",
                                     ".gnupg/x",
                                     "Projects/x"})
    EXPECT_FALSE(linuxAllowsInHome(relative)) << relative;
  for (const std::string location : {"/", "/usr", "/etc", "/var", "/opt", "/home", "/root", "/boot", "/usr/share/x",
                                     "/var/cache/apt", "/var/lib/x/y", "/home/other/.cache/x"})
    EXPECT_FALSE(linuxAllows(defaultFolders(), location)) << location;
}

TEST_F(CleaningSafetyPolicyTests, doesNotBelieveAnEnvironmentThatDeclaresEverythingACache) {
  struct XdgCase {
    std::string cache, location;
    bool isAllowed;
  };
  const std::string home = home_.bytes;
  for (const auto& [cache, location, isAllowed] : std::vector<XdgCase>{
           {"/cache/u", "/cache/u/x", true},
           {"/cache/u", "/cache/u", false},
           {"/cache", "/cache/x", false},
           {"/var/cache/u", "/var/cache/u/x", true},
           {"/var/cache", "/var/cache/apt", false},
           {"/usr/share", "/usr/share/doc", false},
           {"/etc/x/y", "/etc/x/y/z", false},
           {"/", "/srv/a/b", false},
           {home, home + "/Projects", false},
           {home, home + "/.cache/x", false},
           {home + "/.config", home + "/.config/x", false},
           {home + "/.local/share", home + "/.local/share/x", false},
           {home + "/.local", home + "/.local/bin", false},
           {home + "/.local", home + "/.local/share", false},
           {temp_.path().bytes, temp_.at("Users").bytes, false},
       }) {
    ApplicationFolders folders = defaultFolders();
    folders.cache = {cache};
    EXPECT_EQ(linuxAllows(folders, location), isAllowed) << cache << " " << location;
  }
}

TEST_F(CleaningSafetyPolicyTests, protectsWhatLivesInsideACache) {
  ApplicationFolders folders = defaultFolders();
  folders.data = joined(home_, ".cache/mine/data");
  folders.applicationSupport = joined(home_, ".cache/support");
  for (const auto& [relative, isAllowed] : std::vector<Case>{
           {".cache/mine", false},
           {".cache/mine/data", false},
           {".cache/mine/data/x", false},
           {".cache/mine/other", true},
           {".cache/support", false},
           {".cache/support/history.json", false},
       })
    EXPECT_EQ(linuxAllows(folders, joined(home_, relative).bytes), isAllowed) << relative;
}

TEST_F(CleaningSafetyPolicyTests, wantsBothSpellingsOfALinuxPathInside) {
  temp_.makeFolders("Users/u/.cache/sub");
  temp_.makeFolders("Users/u/Downloads");
  temp_.makeFolders("Users/u/Documents/d");
  temp_.makeLink("Users/u/.cache/out", home_.bytes + "/Documents/d");
  temp_.makeLink("Users/u/.cache/across", home_.bytes + "/Downloads/x");
  temp_.makeLink("Users/u/in", home_.bytes + "/.cache");
  temp_.makeFolders("Users/u/.var/app");
  temp_.makeLink("Users/u/.var/app/org.x", home_.bytes + "/Documents");
  temp_.makeFolders("Users/u/Documents/cache");
  temp_.makeLink("Users/u/Pictures", home_.bytes + "/.cache/pictures/all");
  for (const auto& [location, isAllowed] : std::vector<Case>{
           {".cache/out", false},
           {".cache/out/x", false},
           {".cache/across", true},
           {"in/sub", false},
           {".var/app/org.x/cache/y", false},
           {".cache/pictures", false},
       })
    EXPECT_EQ(linuxAllowsInHome(location), isAllowed) << location;
}

TEST_F(CleaningSafetyPolicyTests, knowsAHomeAndACacheThatAreLinks) {
  temp_.makeFolders("Users/u");
  temp_.makeFolders("big/cache");
  temp_.makeLink("Users/alias", "u");
  temp_.makeLink("Users/u/.cache", temp_.at("big/cache").bytes);
  home_ = temp_.at("Users/alias");
  EXPECT_TRUE(linuxAllowsInHome(".cache/x"));
  EXPECT_FALSE(linuxAllowsInHome(".cache"));
  EXPECT_TRUE(linuxAllows(defaultFolders(), temp_.at("big/cache/x").bytes));
  EXPECT_FALSE(linuxAllows(defaultFolders(), temp_.at("big/cache").bytes));
  EXPECT_FALSE(linuxAllows(defaultFolders(), temp_.at("Users/u/Documents").bytes));
}

}  // namespace
}  // namespace quorvane
