#include "quorvane/scan/worktrees/GitOutput.h"

#include <gtest/gtest.h>

#include <string>

namespace quorvane {
namespace {

using namespace std::string_literals;
using Names = std::vector<std::string>;

TEST(GitOutputTests, readsVersionsOfEverySystem) {
  EXPECT_EQ(gitVersion("git version 2.39.5\n"), (GitVersion{2, 39}));
  EXPECT_EQ(gitVersion("git version 2.39.5 (Vendor Git-154)\n"), (GitVersion{2, 39}));
  for (const char* output : {"", "git version", "git version x.1", "git version 2", "git version -2.1", "2.39.5",
                             "git version 99999999999.1"})
    EXPECT_EQ(gitVersion(output), std::nullopt) << output;
}

TEST(GitOutputTests, readsGitFiles) {
  EXPECT_EQ(gitDirectoryNamedBy("gitdir: ../repo/.git/worktrees/a\n"), "../repo/.git/worktrees/a");
  EXPECT_EQ(gitDirectoryNamedBy("gitdir: /r/.git/worktrees/a b\r\n"), "/r/.git/worktrees/a b");
  for (const std::string& text : {""s, "gitdir: "s, "gitdir: \n"s, "ref: refs/heads/main"s, "gitdir: /a\0b"s})
    EXPECT_EQ(gitDirectoryNamedBy(text), std::nullopt) << text;
}

TEST(GitOutputTests, readsPlacesOnlyWhenTheyAreThreeAbsoluteLines) {
  EXPECT_EQ(gitPlaces("/w\n/r/.git/worktrees/w\n/r/.git\n"), (GitPlaces{"/w", "/r/.git/worktrees/w", "/r/.git"}));
  for (const char* output : {"", "/w\n/g\n", "/w\n/g\n/c", "/w\nx\n/g\n/c\n", "w\n/g\n/c\n", "/w\n/g\n\n"})
    EXPECT_EQ(gitPlaces(output), std::nullopt) << output;
}

TEST(GitOutputTests, readsFilterNamesOfAnySpelling) {
  EXPECT_EQ(gitFilterNames(""), Names{});
  EXPECT_EQ(gitFilterNames("filter.lfs.clean\0filter.a=b.c.smudge\0filter.lfs.process\0filter.clean\0filter..clean\0"s),
            (Names{"", "a=b.c", "lfs"}));
  for (const std::string& output : {"filter.x.clean"s, "core.pager\0"s, "\0"s})
    EXPECT_EQ(gitFilterNames(output), std::nullopt) << output;
}

TEST(GitOutputTests, readsStatus) {
  EXPECT_EQ(gitStatus(""), (GitStatus{false, {}}));
  EXPECT_EQ(gitStatus("!! web/node_modules/\0!! .env\0"s), (GitStatus{false, {"web/node_modules/", ".env"}}));
  EXPECT_EQ(gitStatus("?? \n!! x\0"s), (GitStatus{true, {}}));
  // The origin of a rename stands behind it and must not be taken for an ignored file.
  EXPECT_EQ(gitStatus("R  new\0!! old\0"s), (GitStatus{true, {}}));
  EXPECT_EQ(gitStatus("UU both\0!! x\0"s), (GitStatus{true, {"x"}}));
  for (const std::string& output : {"?? a"s, "??\0"s, "?? \0"s, "XX a\0"s, "   a\0"s, "M  \0"s, "R  new\0"s, "\0"s,
                                    "fatal: not a git repository\n"s})
    EXPECT_EQ(gitStatus(output), std::nullopt) << output;
}

TEST(GitOutputTests, readsTheIndex) {
  const std::string plain = "H 100644 4b825dc642cb6eb9a060e54bf8d69288fbee4904 0\ta b\n\tc\0"s;
  EXPECT_EQ(gitIndex(""), (GitIndex{false, false}));
  EXPECT_EQ(gitIndex(plain), (GitIndex{false, false}));
  for (const char* tag : {"h", "S", "s"})
    EXPECT_EQ(gitIndex(plain + tag + plain.substr(1)), (GitIndex{true, false})) << tag;
  EXPECT_EQ(gitIndex(plain + "H 160000 4b825d 0\tsub\0"s), (GitIndex{false, true}));
  for (const std::string& output : {"H 100644 4b825d 0\ta"s, "H 100644 4b825d 0 a\0"s, "X 100644 4b825d 0\ta\0"s,
                                    "H a.txt\0"s, "H 1000 4b825d 0\ta\0"s, "H 100644 4b825d 0\t\0"s, "\0"s})
    EXPECT_EQ(gitIndex(output), std::nullopt) << output;
}

TEST(GitOutputTests, knowsWhatToolsFillAnew) {
  for (const char* path : {"node_modules/", "web/node_modules/", "build/a.o", "x/.venv/", ".DS_Store", "a/.DS_Store"})
    EXPECT_TRUE(isRebuildable(path)) << path;
  for (const char* path : {"", "build", ".env", "builds/", "notes/out.txt", "a/build", ".DS_Store/"})
    EXPECT_FALSE(isRebuildable(path)) << path;
}

}  // namespace
}  // namespace quorvane
