#include "quorvane/scan/worktrees/WorktreeGitInspector.h"

#include "quorvane/platform/SystemPlatform.h"
#include "tests/support/FailingFileSystem.h"
#include "tests/support/ScanHome.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

namespace quorvane {
namespace {

using Keys = std::vector<std::string>;
using State = WorktreeGitState;

std::string shellIn(const FilePath& folder, const std::string& script) {
  ProcessRequest request;
  request.executable = {"/bin/sh"};
  request.arguments = {"-ec", script};
  request.environment = {{"PATH", "/usr/bin:/bin"},        {"HOME", folder.bytes},         {"GIT_CONFIG_NOSYSTEM", "1"},
                         {"GIT_AUTHOR_NAME", "A"},         {"GIT_AUTHOR_EMAIL", "a@test"}, {"GIT_COMMITTER_NAME", "A"},
                         {"GIT_COMMITTER_EMAIL", "a@test"}};
  request.workingFolder = folder;
  request.timeLimit = std::chrono::seconds(60);
  const auto result = SafeProcessRunner().run(request, {});
  EXPECT_TRUE(result && result->exitCode == 0) << script << (result ? result->standardError : "");
  return result ? result->standardOutput : "";
}

/// A repository "repo" and a worktree "wt" of it, on a branch "task" at the same commit as main.
class GitPlayground {
 public:
  GitPlayground() {
    shell(R"(
      git init -q -b main repo
      echo text > repo/a.txt; echo more > repo/b.txt
      printf 'node_modules/\n*.env\n' > repo/.gitignore
      git -C repo add .; git -C repo commit -qm first
      git -C repo worktree add -q -b task ../wt
    )");
  }

  std::string shell(const std::string& script) { return shellIn(folder.path(), script); }

  /// Everything but the times of access.
  std::string fingerprint() { return shell("find repo wt -printf '%p %y %i %s %m %T@ %C@\\n' 2>/dev/null | sort"); }

  FilePath worktree() const { return folder.at("wt"); }

  TempFolder folder;
  SafeProcessRunner runner;
  std::unique_ptr<FileSystem> fileSystem = makeSystemFileSystem();
};

Keys keysOf(const WorktreeFinding& finding) {
  Keys keys;
  for (const ScanCoverageNote& note : finding.notes) keys.push_back(note.key);
  return keys;
}

struct WorktreeCase {
  const char* name;
  const char* script;
  State state;
  Keys notes = {};
};

const std::vector<WorktreeCase> cases = {
    {"at main", "", State::merged},
    {"detached at main", "git -C wt checkout -q --detach", State::merged},
    {"own commit", "git -C wt commit -q --allow-empty -m own", State::committed},
    {"own commit, merged", "git -C wt commit -q --allow-empty -m own; git -C repo merge -q task", State::merged},
    {"behind main", "git -C repo commit -q --allow-empty -m next", State::merged},
    {"main is master", "git -C repo branch -q -m main master", State::merged},
    {"main is trunk", "git -C repo branch -q -m main trunk", State::merged},
    {"only origin has main",
     "git -C repo update-ref refs/remotes/origin/main HEAD; git -C repo branch -q -m main other", State::merged},
    {"no main at all", "git -C repo branch -q -m main other", State::committed},
    {"not in main, but in master", "git -C wt commit -q --allow-empty -m own; git -C wt branch master",
     State::committed},
    {"no commit yet", "git -C wt checkout -q --orphan new; git -C wt rm -rqf .", State::unknown},
    {"relative git file", "echo \"gitdir: ../repo/.git/worktrees/wt\" > wt/.git", State::merged},

    {"untracked only", "echo x > wt/new", State::dirty},
    {"untracked in a new folder", "mkdir -p wt/d/e; echo x > wt/d/e/new", State::dirty},
    {"staged only", "echo x > wt/new; git -C wt add new", State::dirty},
    {"staged, then taken back on disk", "echo x > wt/a.txt; git -C wt add .; echo text > wt/a.txt", State::dirty},
    {"modified", "echo x > wt/a.txt", State::dirty},
    {"deleted", "rm wt/a.txt", State::dirty},
    {"mode changed", "chmod +x wt/a.txt", State::dirty},
    {"file became a link", "rm wt/a.txt; ln -s b.txt wt/a.txt", State::dirty},

    {"rebuildable ignored", "mkdir -p wt/x/node_modules; echo x > wt/x/node_modules/y", State::merged},
    {"precious ignored", "echo x > wt/k.env", State::merged, {"coverage.note.ignoredFiles"}},
    {"precious ignored and dirty", "echo x > wt/k.env; echo x > wt/new", State::dirty, {"coverage.note.ignoredFiles"}},

    {"locked", "git -C repo worktree lock ../wt", State::unknown, {"coverage.note.worktreeLocked"}},
    {"unfinished merge",
     "git -C repo commit -q --allow-empty -m next; git -C wt commit -q --allow-empty -m own;"
     "git -C wt merge -q --no-commit main",
     State::unknown,
     {"coverage.note.unfinishedOperation"}},
    {"conflict",
     "echo 1 > repo/a.txt; git -C repo commit -qam 1; echo 2 > wt/a.txt; git -C wt commit -qam 2;"
     "git -C wt rebase -q main 2>/dev/null || true",
     State::unknown,
     {"coverage.note.unfinishedOperation"}},
    {"bisecting", "git -C wt bisect start >/dev/null", State::unknown, {"coverage.note.unfinishedOperation"}},

    {"assume-unchanged",
     "git -C wt update-index --assume-unchanged a.txt; echo x > wt/a.txt",
     State::unknown,
     {"coverage.note.hiddenChanges"}},
    {"skip-worktree",
     "git -C wt update-index --skip-worktree a.txt; echo x > wt/a.txt",
     State::unknown,
     {"coverage.note.hiddenChanges"}},
    {"submodule",
     "git -C wt update-index --add --cacheinfo 160000,$(git -C repo rev-parse HEAD),sub;"
     "git -C wt commit -qm sub; git -C repo merge -q task",
     State::unknown,
     {"coverage.note.submodules"}},
    {"own repository", "rm -r wt; git clone -q repo wt", State::unknown, {"coverage.note.ownRepository"}},
    {"own repository, dirty",
     "rm -r wt; git clone -q repo wt; echo x > wt/new",
     State::dirty,
     {"coverage.note.ownRepository"}},
    {"repository within, under another name",
     "rm -r wt; git clone -q repo wt; mv wt/.git wt/inner; echo 'gitdir: inner' > wt/.git;"
     "echo inner/ > wt/inner/info/exclude",
     State::unknown,
     {"coverage.note.ownRepository", "coverage.note.ignoredFiles"}},
    {"objects kept in the worktree",
     "mkdir wt/node_modules; mv repo/.git/objects wt/node_modules/; ln -s ../../wt/node_modules/objects repo/.git/",
     State::unknown,
     {"coverage.note.ownRepository"}},

    {"no .git", "rm wt/.git", State::unknown},
    {".git is a link", "mv wt/.git elsewhere; ln -s ../elsewhere wt/.git", State::unknown},
    {".git is a pipe", "rm wt/.git; mkfifo wt/.git", State::unknown},
    {".git is nonsense", "echo nonsense > wt/.git", State::unknown},
    {"git directory gone", "rm -r repo/.git/worktrees", State::unknown},
    {"worktree is a link", "mv wt real; ln -s real wt", State::unknown},
    {"worktree is gone", "rm -r wt", State::unknown},
    {"damaged index", "echo x > repo/.git/worktrees/wt/index", State::unknown},
    {"damaged HEAD", "echo x > repo/.git/worktrees/wt/HEAD", State::unknown},
    {"main's commit is gone",
     "git -C repo commit -q --allow-empty -m next; id=$(git -C repo rev-parse HEAD);"
     "rm -f repo/.git/objects/$(echo $id | cut -c1-2)/$(echo $id | cut -c3-)",
     State::committed},

    // What a repository's configuration could hide.
    {"pointed elsewhere",
     "mkdir elsewhere; cp repo/a.txt repo/b.txt repo/.gitignore elsewhere; echo x > wt/a.txt;"
     "git -C repo config extensions.worktreeConfig true; git -C wt config --worktree core.worktree $PWD/elsewhere",
     State::unknown},
    {"called bare", "git -C repo config extensions.worktreeConfig true; git -C wt config --worktree core.bare true",
     State::unknown},
    {"excludes all", "echo '*' > all; git -C repo config core.excludesFile $PWD/all; echo x > wt/new", State::dirty},
    {"hides untracked", "git -C repo config status.showUntrackedFiles no; echo x > wt/new", State::dirty},
    {"ignores case", "git -C repo config core.ignoreCase true; echo x > wt/A.txt", State::dirty},
    {"ignores modes", "git -C repo config core.fileMode false; chmod +x wt/a.txt", State::dirty},
    {"ignores times of change",
     "git -C repo config core.trustctime false; git -C repo config core.checkStat minimal;"
     "touch -d '2020-01-01' wt/a.txt; git -C wt status >/dev/null; sleep 1.1; echo TEXT > wt/a.txt;"
     "touch -d '2020-01-01' wt/a.txt",
     State::dirty},
    {"replaces main's history", "git -C wt commit -q --allow-empty -m own; git -C wt replace --graft main task",
     State::committed},
    {"grafts main's history",
     "git -C wt commit -q --allow-empty -m own; mkdir -p repo/.git/info;"
     "echo $(git -C repo rev-parse main task) > repo/.git/info/grafts",
     State::committed},
};

TEST(WorktreeGitInspectorTests, provesTheStateOfRealWorktreesAndChangesNothing) {
  for (const WorktreeCase& worktreeCase : cases) {
    SCOPED_TRACE(worktreeCase.name);
    GitPlayground playground;
    playground.shell(worktreeCase.script);
    const WorktreeGitInspector inspector(*playground.fileSystem, playground.runner);
    ASSERT_TRUE(inspector.isGitAvailable());
    const std::string before = playground.fingerprint();
    const WorktreeFinding finding = inspector.inspect({playground.worktree()}, {});
    EXPECT_EQ(caseName(finding.state), caseName(worktreeCase.state));
    EXPECT_EQ(keysOf(finding), worktreeCase.notes);
    EXPECT_EQ(before, playground.fingerprint());
  }
}

TEST(WorktreeGitInspectorTests, aMergedWorktreeIsNotSafeInAScanWithAnotherRepositoryInIt) {
  ScanHome home{HomeLayout::linux};
  shellIn(home.folder.path(), R"(
    git init -q -b main repo; echo build/ > repo/.gitignore
    git -C repo add .; git -C repo commit -qm first
    git -C repo worktree add -q -b plain ../.claude/worktrees/plain
    git -C repo worktree add -q -b nested ../.claude/worktrees/nested
    git init -q .claude/worktrees/nested/build/own
  )");
  EXPECT_EQ(home.verdicts(), (std::map<std::string, std::string>{
                                 {".claude/worktrees/plain", "safe reason.aiWorktree.merged"},
                                 {".claude/worktrees/nested", "review reason.aiWorktree"},
                             }));
}

TEST(WorktreeGitInspectorTests, namesAFewOfThePreciousIgnoredFiles) {
  GitPlayground playground;
  playground.shell(
      "for i in 1 2 3 4 5; do echo x > wt/$i.env; done; mkdir wt/node_modules; echo x > wt/node_modules/y");
  const auto finding =
      WorktreeGitInspector(*playground.fileSystem, playground.runner).inspect({playground.worktree()}, {});
  const ScanCoverageNote expected{std::nullopt, "coverage.note.ignoredFiles", 5, {"1.env", "2.env", "3.env"}};
  EXPECT_EQ(finding, (WorktreeFinding{State::merged, {expected}}));
}

TEST(WorktreeGitInspectorTests, leavesAWorktreeAloneThatAProcessStandsIn) {
  GitPlayground playground;
  const WorktreeGitInspector inspector(*playground.fileSystem, playground.runner);
  const auto finding = inspector.inspect({playground.worktree(), true}, {});
  EXPECT_EQ(finding.state, State::unknown);
  EXPECT_EQ(keysOf(finding), Keys{"coverage.note.worktreeInUse"});
}

/// Every way known to make git start a program or fetch, in a configuration that comes with the worktree.
constexpr auto traps = R"(
  printf '#!/bin/sh\ntouch "%s/canary"\ncat\n' "$PWD" > trap; chmod +x trap; T=$PWD/trap
  printf '#!/bin/sh\ntouch "%s/canary"\n' "$PWD" > fetched; chmod +x fetched
  mkdir hooks; for h in post-index-change post-checkout pre-commit reference-transaction fsmonitor-watchman; do
    cp trap hooks/$h; done
  printf '* filter=evil diff=evil merge=evil\nb.txt filter=a=b.c\n' > repo/.git/info/attributes
  printf '[filter "evil"]\n\tclean = %s\n\tsmudge = %s\n\tprocess = %s\n\trequired = true\n' $T $T $T > included
  printf '[filter "a=b.c"]\n\tclean = %s\n\trequired = true\n' $T >> included
  cd repo
  git config include.path $PWD/../included
  git config extensions.worktreeConfig true
  git -C ../wt config --worktree filter.third.process $T
  git config core.hooksPath $PWD/../hooks
  git config core.fsmonitor $T
  git config diff.external $T; git config diff.evil.command $T; git config diff.evil.textconv $T
  git config merge.evil.driver $T
  git config core.sshCommand $T; git config core.askPass $T; git config core.editor $T; git config core.pager $T
  git config pager.status $T; git config core.gitProxy $T; git config credential.helper $T
  git config alias.status "!$T"; git config alias.rev-parse "!$T"
  git config core.alternateRefsCommand $T; git config gpg.program $T; git config log.showSignature true
  git config remote.origin.url "ext::$PWD/../fetched"; git config remote.origin.promisor true
  git config remote.origin.uploadpack $T; git config protocol.ext.allow always; git config protocol.allow always
  git config core.untrackedCache true; git config submodule.recurse true; git config status.submoduleSummary true
  cd ..
  touch -d '2021-01-01' wt/a.txt wt/b.txt
)";

TEST(WorktreeGitInspectorTests, letsNoConfigurationStartAProgram) {
  GitPlayground playground;
  playground.shell(traps);
  const WorktreeGitInspector inspector(*playground.fileSystem, playground.runner);
  EXPECT_EQ(inspector.inspect({playground.worktree()}, {}).state, State::merged);
  EXPECT_FALSE(playground.folder.holds("canary"));

  playground.shell("git -C wt -c core.fsmonitor=false status >/dev/null 2>&1 || true");
  EXPECT_TRUE(playground.folder.holds("canary")) << "the filters were no trap";
  playground.shell("rm canary; git -C wt ls-files -o >/dev/null 2>&1 || true");
  EXPECT_TRUE(playground.folder.holds("canary")) << "the file-system monitor was no trap";
}

TEST(WorktreeGitInspectorTests, fetchesNothingThatIsMissing) {
  GitPlayground playground;
  playground.shell(R"(
    git -C repo commit -q --allow-empty -m next; id=$(git -C repo rev-parse HEAD)
    git -C repo config core.repositoryFormatVersion 1; git -C repo config extensions.partialClone origin
    rm -f repo/.git/objects/$(echo $id | cut -c1-2)/$(echo $id | cut -c3-)
  )");
  playground.shell(traps);
  const WorktreeGitInspector inspector(*playground.fileSystem, playground.runner);
  EXPECT_NE(inspector.inspect({playground.worktree()}, {}).state, State::merged);
  EXPECT_FALSE(playground.folder.holds("canary"));

  playground.shell("git -C wt -c core.fsmonitor=false cat-file -p main >/dev/null 2>&1 || true");
  EXPECT_TRUE(playground.folder.holds("canary")) << "the remote was no trap";
}

TEST(WorktreeGitInspectorTests, startsNothingInASubmodule) {
  GitPlayground playground;
  playground.shell(R"(
    git clone -q repo wt/sub; git -C wt add sub 2>/dev/null; git -C wt commit -qm sub; git -C repo merge -q task
    printf '#!/bin/sh\ntouch "%s/canary"\ncat\n' "$PWD" > trap; chmod +x trap
    git -C wt/sub config core.fsmonitor $PWD/trap; git -C wt/sub config filter.evil.clean $PWD/trap
    echo '* filter=evil' > wt/sub/.git/info/attributes; touch -d '2021-01-01' wt/sub/a.txt
  )");
  const WorktreeGitInspector inspector(*playground.fileSystem, playground.runner);
  EXPECT_EQ(inspector.inspect({playground.worktree()}, {}).state, State::unknown);
  EXPECT_FALSE(playground.folder.holds("canary"));

  playground.shell("git -C wt -c core.fsmonitor=false status >/dev/null 2>&1");
  EXPECT_TRUE(playground.folder.holds("canary")) << "the submodule was no trap";
}

/// Spoils what one call of another runner brought.
class SpoilingRunner final : public ProcessRunner {
 public:
  using Spoil = std::function<void(Outcome<SafeProcessResult, PosixError>&)>;

  explicit SpoilingRunner(ProcessRunner& real) : real_(real) {}

  void spoil(std::size_t call, Spoil spoil) {
    calls_ = 0;
    spoiledCall_ = call;
    spoil_ = std::move(spoil);
  }

  std::size_t calls() const { return calls_; }

  Outcome<SafeProcessResult, PosixError> run(const ProcessRequest& request, StopToken stop) override {
    auto result = real_.run(request, std::move(stop));
    if (++calls_ == spoiledCall_) spoil_(result);
    return result;
  }

 private:
  ProcessRunner& real_;
  std::size_t calls_ = 0;
  std::size_t spoiledCall_ = 0;
  Spoil spoil_;
};

TEST(WorktreeGitInspectorTests, isUnknownWhateverCallOfGitFails) {
  const std::vector<SpoilingRunner::Spoil> spoils = {
      [](auto& result) { result = failure(PosixError{ENOENT}); },
      [](auto& result) { result->didTimeOut = true; },
      [](auto& result) { result->droppedOutputBytes = 1; },
      [](auto& result) { result->isOutputComplete = false; },
      [](auto& result) { result->exitCode = 128; },
      [](auto& result) { result->exitCode = 137; },
  };
  GitPlayground playground;
  SpoilingRunner runner(playground.runner);
  const WorktreeGitInspector inspector(*playground.fileSystem, runner);
  runner.spoil(0, {});
  ASSERT_EQ(inspector.inspect({playground.worktree()}, {}).state, State::merged);
  const std::size_t calls = runner.calls();
  ASSERT_GT(calls, 4U);
  for (std::size_t call = 1; call <= calls; ++call)
    for (const auto& spoil : spoils) {
      runner.spoil(call, spoil);
      EXPECT_EQ(inspector.inspect({playground.worktree()}, {}).state, State::unknown) << "call " << call;
    }
}

TEST(WorktreeGitInspectorTests, isUnknownWhateverTheFileSystemRefuses) {
  GitPlayground playground;
  FailingFileSystem counting(*playground.fileSystem);
  const WorktreeGitInspector inspector(counting, playground.runner);
  ASSERT_EQ(inspector.inspect({playground.worktree()}, {}).state, State::merged);
  ASSERT_GT(counting.calls(), 10U);
  for (std::size_t call = 1; call <= counting.calls(); ++call) {
    FailingFileSystem failing(*playground.fileSystem);
    failing.failAt(call);
    const WorktreeGitInspector misled(failing, playground.runner);
    EXPECT_EQ(misled.inspect({playground.worktree()}, {}).state, State::unknown) << "call " << call;
  }
}

TEST(WorktreeGitInspectorTests, knowsNothingAfterAStopRequest) {
  GitPlayground playground;
  StopSource stop;
  stop.requestStop();
  const WorktreeGitInspector inspector(*playground.fileSystem, playground.runner);
  EXPECT_EQ(inspector.inspect({playground.worktree()}, stop.token()), WorktreeFinding{});
}

TEST(WorktreeGitInspectorTests, needsAGitThatItCanKeepInCheck) {
  GitPlayground playground;
  playground.shell("printf '#!/bin/sh\\necho git version 2.30.9\\n' > old; chmod +x old");
  const GitPrograms unusable[] = {{{"/nonexistent/git"}, {}},
                                  {{"/bin/false"}, {}},
                                  {{"/bin/echo"}, {}},
                                  {playground.folder.at("old"), {}},
                                  {{"/usr/bin/git"}, FilePath{"/bin/false"}},
                                  {{"/usr/bin/git"}, FilePath{"/nonexistent/tools"}}};
  for (const GitPrograms& programs : unusable) {
    const WorktreeGitInspector inspector(*playground.fileSystem, playground.runner, programs);
    EXPECT_FALSE(inspector.isGitAvailable()) << programs.gitURL.bytes;
    EXPECT_EQ(inspector.inspect({playground.worktree()}, {}), WorktreeFinding{});
  }
  const GitPrograms usable{{"/usr/bin/git"}, FilePath{"/bin/true"}};
  EXPECT_TRUE(WorktreeGitInspector(*playground.fileSystem, playground.runner, usable).isGitAvailable());
}

}  // namespace
}  // namespace quorvane
