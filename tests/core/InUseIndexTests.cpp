#include "quorvane/core/InUseIndex.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

namespace quorvane {
namespace {

using Processes = Outcome<std::vector<RunningProcess>, PosixError>;

RunningProcess process(const std::string& program, const std::string& workingFolder,
                       const std::vector<std::string>& openPaths) {
  RunningProcess running;
  running.program = program;
  running.isInspectable = true;
  running.workingFolder = {workingFolder};
  for (const std::string& path : openPaths) running.openPaths.push_back({path});
  return running;
}

RunningProcess opaque(const std::string& program) {
  RunningProcess running;
  running.program = program;
  return running;
}

TEST(InUseIndexTests, findsUsesAtOrBelowAPath) {
  const InUseIndex index(Processes(std::vector{process("a", "/w/tree/inner", {"/c/a-b", "/c/a/file", "/c/z"}),
                                               process("b", "", {"/c/a.d/x", "/c/exact"})}));
  for (const std::string path :
       {"/c/a", "/c/a/file", "/c/a-b", "/c/a.d", "/c/exact", "/c", "/", "/w", "/w/tree", "/w/tree/inner", "/c/z"})
    EXPECT_TRUE(index.isInUse({path})) << path;
  for (const std::string path :
       {"/c/a/file/x", "/c/a/fil", "/c/ab", "/c/a-", "/c/exact/x", "/w/tree/inner/x", "/w/tr", "/d", "/c/zz"})
    EXPECT_FALSE(index.isInUse({path})) << path;
  EXPECT_TRUE(index.uninspectable().empty());
}

TEST(InUseIndexTests, tellsWorkingFoldersFromOpenFiles) {
  const InUseIndex index(Processes(std::vector{process("a", "/w/tree/inner", {"/w/other/file"})}));
  EXPECT_TRUE(index.standsIn({"/w/tree"}));
  EXPECT_TRUE(index.standsIn({"/w/tree/inner"}));
  EXPECT_FALSE(index.standsIn({"/w/other"}));
  EXPECT_FALSE(index.standsIn({"/w/tree/inner/deeper"}));
}

TEST(InUseIndexTests, countsEverythingAsInUseWithoutAProcessTable) {
  const InUseIndex index(Processes(failure(PosixError{EACCES})));
  EXPECT_FALSE(index.couldReadProcesses());
  EXPECT_TRUE(index.isInUse({"/anything"}));
  EXPECT_TRUE(index.standsIn({"/anything"}));
}

TEST(InUseIndexTests, letsAnOpaqueProcessClaimFoldersOfItsName) {
  const InUseIndex index(Processes(std::vector{opaque("Chrome"), opaque("ssh-agent"), opaque("sh"), opaque("zsh"),
                                               opaque("agent"), opaque(""), opaque("ssh-agent")}));
  for (const std::string path : {"/c/chrome", "/c/google-chrome", "/c/Google Chrome", "/c/org.chrome.Chrome",
                                 "/c/ssh-agent", "/c/SSH-Agent", "/c/chrome_cache.2"})
    EXPECT_TRUE(index.isInUse({path})) << path;
  for (const std::string path : {"/c/chromium", "/c/googlechrome", "/chrome/cache", "/c/ssh", "/c/agent", "/c/sh",
                                 "/c/zsh", "/c/my-agent", "/c/ssh-agent-1", "/c/-", "/"})
    EXPECT_FALSE(index.isInUse({path})) << path;
  EXPECT_FALSE(index.standsIn({"/c/chrome"}));
  EXPECT_EQ(index.uninspectable(), (std::vector<std::string>{"Chrome", "agent", "sh", "ssh-agent", "zsh"}));
}

}  // namespace
}  // namespace quorvane
