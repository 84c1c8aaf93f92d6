// The program itself, where it meets the shell.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include <sys/wait.h>

namespace quorvane {
namespace {

int exitCodeOf(const std::string& script) {
  const int status = std::system(("Q='" QUORVANE_PROGRAM "'; exec 2>/dev/null; " + script).c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

TEST(ProgramTests, endsSensiblyWhateverItsChannelsAre) {
  EXPECT_EQ(exitCodeOf("\"$Q\" --version >/dev/null"), 0);
  EXPECT_EQ(exitCodeOf("\"$Q\" --help >/dev/full"), 4);
  EXPECT_EQ(exitCodeOf("\"$Q\" --help >&-"), 4) << "a closed channel is a lost result";
  EXPECT_EQ(exitCodeOf("\"$Q\" --help 2>&- <&- >/dev/null"), 0);
  EXPECT_EQ(
      exitCodeOf(
          "F=$(mktemp); { sleep 0.1; \"$Q\" --help; echo $? >\"$F\"; } | true; read C <\"$F\"; rm \"$F\"; exit $C"),
      0)
      << "a reader who has gone away is no failure";
  EXPECT_EQ(exitCodeOf("\"$Q\" scna >/dev/null"), 2);
  EXPECT_EQ(exitCodeOf("HOME=/nonexistent \"$Q\" scan >/dev/null"), 3);
}

TEST(ProgramTests, leavesAWordOnCtrlCWhereverItIs) {
  const std::string waiting = "sleep 5 | timeout --preserve-status -s INT 0.3 \"$Q\" clean --from - --yes";
  EXPECT_EQ(exitCodeOf(waiting), 130);
  EXPECT_EQ(exitCodeOf(waiting + " 2>&1 | grep -q 'cli.stopped.seeHistory'"), 0);
}

}  // namespace
}  // namespace quorvane
