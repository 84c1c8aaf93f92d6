#include "quorvane/core/TreeWalker.h"

#include "quorvane/platform/ProcessRunner.h"
#include "quorvane/platform/SystemPlatform.h"
#include "tests/support/FailingFileSystem.h"
#include "tests/support/HostileTree.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <tuple>

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvane {
namespace {

class TreeWalkerTests : public testing::Test {
 protected:
  TreeOutcome measure(const std::string& name, WalkRequest request = {}) {
    return walker.measure({{folder.descriptor(), name}}, request).front();
  }

  TreeMeasurement measured(const std::string& name) {
    const TreeOutcome outcome = measure(name);
    EXPECT_TRUE(outcome.has_value()) << name;
    return outcome.value_or(TreeMeasurement{});
  }

  /// What another program says about the same tree.
  std::int64_t sizeByDu(const std::string& name) {
    ProcessRequest request;
    request.executable = {"/usr/bin/du"};
    request.arguments = {"-s", "-x", "-B1", folder.at(name).bytes};
    request.timeLimit = std::chrono::seconds(60);
    const auto result = SafeProcessRunner().run(request, {});
    return result ? std::stoll(result->standardOutput) : -1;
  }

  TempFolder folder;
  std::unique_ptr<FileSystem> real = makeSystemFileSystem();
  FailingFileSystem fileSystem{*real};
  TreeWalker walker{fileSystem};
};

TEST_F(TreeWalkerTests, agreesWithDuOnAHostileTree) {
  makeHostileTree(folder, "t");
  const TreeMeasurement tree = measured("t");
  EXPECT_EQ(tree.allocatedBytes, sizeByDu("t"));
  EXPECT_EQ(tree.entryCount, hostileTreeEntries);
  EXPECT_FALSE(tree.isLowerBound());
}

TEST_F(TreeWalkerTests, reachesTheBottomOfAVeryDeepTree) {
  makeDeepTree(folder, "deep", 4096);
  const TreeMeasurement tree = measured("deep");
  EXPECT_EQ(tree.entryCount, 4096 + 4096 / 64 + 1);
  EXPECT_FALSE(tree.isLowerBound());
  EXPECT_EQ(tree.allocatedBytes, sizeByDu("deep"));
}

TEST_F(TreeWalkerTests, measuresARootThatIsNoFolder) {
  folder.write("file", std::string(9000, 'f'));
  folder.makeLink("link", ".");
  EXPECT_EQ(measured("file").allocatedBytes, sizeByDu("file"));
  const TreeMeasurement link = measured("link");
  EXPECT_TRUE(link.root.isLink());
  EXPECT_EQ(link.entryCount, 1);
  EXPECT_NE(measured("file").digest, link.digest);
  EXPECT_EQ(measure("missing").error(), PosixError{ENOENT});

  const std::string before = measured("file").digest;
  struct stat old {};
  ASSERT_EQ(::stat(folder.at("file").bytes.c_str(), &old), 0);
  folder.write("file", std::string(9000, 'F'));
  const timespec times[2] = {old.st_atim, old.st_mtim};
  ASSERT_EQ(::utimensat(AT_FDCWD, folder.at("file").bytes.c_str(), times, 0), 0);
  EXPECT_NE(measured("file").digest, before) << "content changed and the time set back";
}

TEST_F(TreeWalkerTests, tellsTheNewestModificationOfAnything) {
  folder.write("t/sub/file", "x");
  const auto set = [&](const char* name, time_t seconds) {
    const timespec times[2] = {{seconds, 5}, {seconds, 5}};
    ASSERT_EQ(::utimensat(AT_FDCWD, folder.at(name).bytes.c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
  };
  for (const char* newest : {"t", "t/sub", "t/sub/file"}) {
    for (const char* name : {"t", "t/sub", "t/sub/file"}) set(name, std::string_view(name) == newest ? 2000 : 1000);
    EXPECT_EQ(measured("t").newestModification, (FileTime{2000, 5})) << newest;
  }
}

TEST_F(TreeWalkerTests, theDigestTellsEveryChangeAndNothingElse) {
  const auto makeTree = [&](const std::string& at) {
    folder.write(at + "/one/file", "content");
    folder.write(at + "/one/other", "content");
    folder.write(at + "/two/file", "content");
    folder.makeFolders(at + "/empty");
    folder.makeLink(at + "/link", "one");
  };
  const auto path = [&](const char* relative) { return folder.at(std::string("t/") + relative).bytes; };
  const auto rewriteKeepingItsTime = [&] {
    struct stat before {};
    ::stat(path("two/file").c_str(), &before);
    folder.write("t/two/file", "CONTENT");
    const timespec times[2] = {before.st_atim, before.st_mtim};
    ::utimensat(AT_FDCWD, path("two/file").c_str(), times, 0);
  };
  const std::vector<std::pair<const char*, std::function<void()>>> changes{
      {"a new file", [&] { folder.write("t/two/new", ""); }},
      {"a new folder", [&] { folder.makeFolders("t/empty/new"); }},
      {"a file gone", [&] { ::unlink(path("one/other").c_str()); }},
      {"a rename", [&] { ::rename(path("one/file").c_str(), path("one/renamed").c_str()); }},
      {"two names exchanged",
       [&] {
         ::rename(path("one/file").c_str(), path("x").c_str());
         ::rename(path("one/other").c_str(), path("one/file").c_str());
         ::rename(path("x").c_str(), path("one/other").c_str());
       }},
      {"a move to another folder", [&] { ::rename(path("one/other").c_str(), path("two/other").c_str()); }},
      {"other permissions", [&] { ::chmod(path("one/file").c_str(), 0640); }},
      {"permissions of a folder", [&] { ::chmod(path("one").c_str(), 0750); }},
      {"permissions of the root", [&] { ::chmod(folder.at("t").bytes.c_str(), 0711); }},
      {"content changed and the time set back", rewriteKeepingItsTime},
      {"a second link to a file",
       [&] { std::ignore = ::link(path("two/file").c_str(), folder.at("elsewhere").bytes.c_str()); }},
      {"a link that points elsewhere",
       [&] {
         ::unlink(path("link").c_str());
         folder.makeLink("t/link", "two");
       }},
  };
  for (const auto& [name, change] : changes) {
    std::filesystem::remove_all(folder.at("t").bytes);
    makeTree("t");
    const std::string before = measured("t").digest;
    EXPECT_EQ(before.size(), 64u);
    EXPECT_EQ(measured("t").digest, before) << name;
    change();
    EXPECT_NE(measured("t").digest, before) << name;
  }
  const std::string before = measured("t").digest;
  ASSERT_EQ(::rename(folder.at("t").bytes.c_str(), folder.at("moved").bytes.c_str()), 0);
  EXPECT_EQ(measured("moved").digest, before) << "moving the whole tree changes nothing in it";
  makeTree("twin");
  EXPECT_NE(measured("twin").digest, before) << "the same names and contents are not the same files";
}

TEST_F(TreeWalkerTests, theDigestDoesNotDependOnTheThreads) {
  for (int i = 0; i < 60; ++i)
    for (int j = 0; j < 10; ++j) folder.write("t/" + std::to_string(i) + "/" + std::to_string(i * j) + "/file", "x");
  const TreeMeasurement first = measured("t");
  for (int i = 0; i < 20; ++i) {
    const TreeMeasurement again = measured("t");
    ASSERT_EQ(again.digest, first.digest);
    ASSERT_EQ(again.allocatedBytes, first.allocatedBytes);
  }
}

TEST_F(TreeWalkerTests, namesWhatItCouldNotRead) {
  folder.write("t/a/file", "x");
  folder.write("t/b/c/file", "x");
  for (const std::size_t number : {1u, 2u, 4u}) {
    FailingFileSystem failing(*real);
    failing.countOnly({FileCall::list});
    failing.failAt(number, FaultSpan::once, EACCES);
    const auto outcome = TreeWalker(failing).measure({{folder.descriptor(), "t"}}, {}).front();
    ASSERT_TRUE(outcome.has_value());
    EXPECT_TRUE(outcome->isLowerBound());
    EXPECT_EQ(outcome->unreadableCount, 1);
    ASSERT_EQ(outcome->unreadable.size(), 1u);
    const std::set<std::string> possible =
        number == 1 ? std::set<std::string>{""} : std::set<std::string>{"a", "b", "b/c"};
    EXPECT_TRUE(possible.contains(outcome->unreadable[0])) << outcome->unreadable[0];
  }
  FailingFileSystem failing(*real);
  failing.countOnly({FileCall::openFolder});
  failing.failAt(1, FaultSpan::fromThereOn, EACCES);
  EXPECT_EQ(TreeWalker(failing).measure({{folder.descriptor(), "t"}}, {}).front().error(), PosixError{EACCES});
}

TEST_F(TreeWalkerTests, neverFollowsWhatTakesAFoldersPlace) {
  folder.write("outside/secret", std::string(1 << 20, 's'));
  const std::vector<std::pair<const char*, std::function<void()>>> swaps{
      {"gone", [] {}},
      {"a link to a folder", [&] { folder.makeLink("t/sub", "../outside"); }},
      {"a file", [&] { folder.write("t/sub", "file"); }},
  };
  for (const auto& [name, swap] : swaps) {
    folder.write("t/sub/file", "x");
    FailingFileSystem failing(*real);
    failing.countOnly({FileCall::openFolder});
    failing.beforeCall(2, [&] {
      ::unlink(folder.at("t/sub/file").bytes.c_str());
      ::rmdir(folder.at("t/sub").bytes.c_str());
      swap();
    });
    const auto outcome = TreeWalker(failing).measure({{folder.descriptor(), "t"}}, {}).front();
    ASSERT_TRUE(outcome.has_value()) << name;
    EXPECT_TRUE(outcome->changedWhileRead) << name;
    EXPECT_EQ(outcome->entryCount, 1) << name;
    EXPECT_LT(outcome->allocatedBytes, 1 << 20) << name;
    ::unlink(folder.at("t/sub").bytes.c_str());
  }
}

TEST_F(TreeWalkerTests, entersNoOtherMount) {
  folder.write("t/sub/file", "x");
  folder.makeFolders("t/mount");
  const std::string mountPoint = folder.at("t/mount").bytes;
  if (::mount("none", mountPoint.c_str(), "tmpfs", 0, "size=4m") != 0)
    GTEST_SKIP() << "skipped: mounting is not permitted";
  folder.write("t/mount/inside", std::string(1 << 20, 'm'));
  const TreeMeasurement tree = measured("t");
  ::umount(mountPoint.c_str());
  EXPECT_EQ(tree.mountsInside, std::vector<std::string>{"mount"});
  EXPECT_TRUE(tree.isLowerBound());
  EXPECT_LT(tree.allocatedBytes, 1 << 20);

  // A bind mount has the device of its own source: only the mount tells it.
  folder.write("source/file", std::string(1 << 20, 'b'));
  ASSERT_EQ(::mount(folder.at("source").bytes.c_str(), mountPoint.c_str(), nullptr, MS_BIND, nullptr), 0);
  const TreeMeasurement bound = measured("t");
  ::umount(mountPoint.c_str());
  EXPECT_EQ(bound.mountsInside, std::vector<std::string>{"mount"});
  EXPECT_LT(bound.allocatedBytes, 1 << 20);
}

TEST_F(TreeWalkerTests, measuresManyTreesAndTellsOfEach) {
  std::vector<TreeRoot> roots;
  for (int i = 0; i < 50; ++i) {
    folder.write("t" + std::to_string(i) + "/a/b/file", std::string(static_cast<std::size_t>(i) * 4096, 'x'));
    roots.push_back({folder.descriptor(), "t" + std::to_string(i)});
  }
  roots.push_back({folder.descriptor(), "missing"});
  std::atomic<int> begun = 0, ended = 0;
  WalkRequest request;
  request.begins = [&](std::size_t) { return ++begun > 0; };
  request.ends = [&](std::size_t index, const TreeOutcome& outcome) { ended += outcome.has_value() || index == 50; };
  const auto outcomes = walker.measure(roots, request);
  ASSERT_EQ(outcomes.size(), roots.size());
  EXPECT_EQ(begun, 51);
  EXPECT_EQ(ended, 51);
  for (std::size_t i = 0; i < 50; ++i) EXPECT_EQ(outcomes[i]->allocatedBytes, sizeByDu(roots[i].name));
  EXPECT_FALSE(outcomes[50].has_value());
}

TEST_F(TreeWalkerTests, stopsWhenAsked) {
  std::vector<TreeRoot> roots;
  for (int i = 0; i < 20; ++i) {
    folder.write("t" + std::to_string(i) + "/a/file", "x");
    roots.push_back({folder.descriptor(), "t" + std::to_string(i)});
  }
  StopSource source;
  std::atomic<int> begun = 0;
  WalkRequest byToken;
  byToken.stop = source.token();
  byToken.ends = [&](std::size_t, const TreeOutcome&) { source.requestStop(); };
  WalkRequest byGate;
  byGate.begins = [&](std::size_t) { return ++begun < 5; };
  for (const WalkRequest& request : {byToken, byGate}) {
    const auto outcomes = walker.measure(roots, request);
    EXPECT_EQ(outcomes.back().error(), PosixError{ECANCELED});
  }
  EXPECT_LT(begun, 10);
}

}  // namespace
}  // namespace quorvane
