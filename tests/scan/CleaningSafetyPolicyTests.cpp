#include "quorvane/scan/policy/CleaningSafetyPolicy.h"

#include "quorvane/platform/SystemPlatform.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <initializer_list>
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

  using Paths = std::initializer_list<std::string>;
  void expectMacos(Paths allowed, Paths refused) {
    for (const std::string& path : allowed) EXPECT_TRUE(macosAllowsInHome(path)) << path;
    for (const std::string& path : refused) EXPECT_FALSE(macosAllowsInHome(path)) << path;
  }
  void expectLinux(Paths allowed, Paths refused) {
    for (const std::string& path : allowed) EXPECT_TRUE(linuxAllowsInHome(path)) << path;
    for (const std::string& path : refused) EXPECT_FALSE(linuxAllowsInHome(path)) << path;
  }

  TempFolder temp_;
  FilePath home_ = temp_.at("Users/u");
  std::unique_ptr<FileSystem> fileSystem_ = makeSystemFileSystem();
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
  expectMacos({mail + "/Data/Library/Mail Downloads/x", mail + "/Data/Library/Mail Downloads/x/y", mail + "box/x"},
              {mail, mail + "/x", mail + "/Data/Library/Caches/x", mail + "/Data/Library/Mail Downloads",
               mail + "/Data/Library/Mail Downloads/../Mail", mail + "/Data/Library/Mail Downloads 2/x"});
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
  expectMacos({"Documents/in/x"}, {mail + "Mail Downloads/out", mail + "Mail Downloads/out/x", "Library/Caches/out",
                                   "Library/Caches/out/x", "Library/Caches/intoMail/x", "Library/Caches/loop"});
  EXPECT_TRUE(macosAllows(temp_.at("Users/alias/Library/Caches/x").bytes));
  home_ = temp_.at("Users/alias");
  EXPECT_TRUE(macosAllowsInHome("Library/Caches/x"));
  EXPECT_FALSE(macosAllowsInHome("Library/Caches/out"));
}

TEST_F(CleaningSafetyPolicyTests, allowsWhatLiesInsideTheLinuxRoots) {
  expectLinux({".cache/x", ".cache/x/y", "Downloads/old.deb", ".codex/worktrees/w", ".local/state/app/logs/1.log",
               ".var/app/org.x.Y/cache/z", "snap/x/common/.cache/y", ".npm/_cacache", ".npm/_cacache/index"},
              {".cache", ".cachex/y", "Downloads", ".codex/worktrees", ".local/state/app/logs", ".local/state/app",
               ".var/app/org.x.Y/cache", ".var/app/org.x.Y", ".var/app/org.x.Y/config/z", ".var/app/a/b/cache/z",
               "snap/x/current/.cache/y", ".npm", ".npm/_cacache/.."});
}

TEST_F(CleaningSafetyPolicyTests, protectsFoldersOfTheLinuxHomeAndSystem) {
  expectLinux({}, {"", ".config", ".config/x", ".local", ".local/share", ".local/share/x", ".local/state",
                   ".local/share/Quorvane/x", "Documents", "Documents/x", "Desktop", "Pictures", "Music", "Videos"});
  expectLinux(
      {}, {"Public", "Templates", ".var", ".var/app", "snap", ".ssh", ".ssh/id", ".gnupg", ".gnupg/x", "Projects/x"});
  for (const std::string location : {"/", "/usr", "/etc", "/var", "/opt", "/home", "/root", "/boot", "/usr/share/x",
                                     "/var/cache/apt", "/var/lib/x/y", "/home/other/.cache/x"})
    EXPECT_FALSE(linuxAllows(defaultFolders(), location)) << location;
}

TEST_F(CleaningSafetyPolicyTests, doesNotBelieveAnEnvironmentThatDeclaresEverythingACache) {
  const std::string home = home_.bytes;
  const auto allows = [&](const std::string& cache, const std::string& location) {
    ApplicationFolders folders = defaultFolders();
    folders.cache = {cache};
    return linuxAllows(folders, location);
  };
  EXPECT_TRUE(allows("/cache/u", "/cache/u/x"));
  EXPECT_TRUE(allows("/var/cache/u", "/var/cache/u/x"));
  for (const auto& [cache, location] :
       std::initializer_list<std::pair<std::string, std::string>>{{"/cache/u", "/cache/u"},
                                                                  {"/cache", "/cache/x"},
                                                                  {"/var/cache", "/var/cache/apt"},
                                                                  {"/usr/share", "/usr/share/doc"},
                                                                  {"/etc/x/y", "/etc/x/y/z"},
                                                                  {"/", "/srv/a/b"},
                                                                  {home, home + "/Projects"},
                                                                  {home, home + "/.cache/x"},
                                                                  {home + "/.config", home + "/.config/x"},
                                                                  {home + "/.local/share", home + "/.local/share/x"},
                                                                  {home + "/.local", home + "/.local/bin"},
                                                                  {home + "/.local", home + "/.local/share"},
                                                                  {temp_.path().bytes, temp_.at("Users").bytes}})
    EXPECT_FALSE(allows(cache, location)) << cache << " " << location;
}

TEST_F(CleaningSafetyPolicyTests, protectsWhatLivesInsideACache) {
  ApplicationFolders folders = defaultFolders();
  folders.data = joined(home_, ".cache/mine/data");
  folders.applicationSupport = joined(home_, ".cache/support");
  EXPECT_TRUE(linuxAllows(folders, joined(home_, ".cache/mine/other").bytes));
  for (const char* relative :
       {".cache/mine", ".cache/mine/data", ".cache/mine/data/x", ".cache/support", ".cache/support/history.json"})
    EXPECT_FALSE(linuxAllows(folders, joined(home_, relative).bytes)) << relative;
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
  expectLinux({".cache/across"}, {".cache/out", ".cache/out/x", "in/sub", ".var/app/org.x/cache/y", ".cache/pictures"});
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
