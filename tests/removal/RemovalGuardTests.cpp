#include "tests/support/CleaningHome.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <functional>

#include <sys/mount.h>
#include <sys/stat.h>

namespace quorvane {
namespace {

using namespace std::chrono_literals;
using testing::SizeIs;
using Fates = std::map<std::string, std::string>;

/// What a run of the remover does not move, and why.
class RemovalGuardTests : public testing::Test {
 protected:
  std::string fateOf(const RemovalRequest& request) {
    const RemovalReport report = home.remove({request});
    if (report.failures.empty()) return report.movedCount == 1 ? "moved" : "nothing";
    EXPECT_EQ(report.movedCount, 0);
    return textOf(report.failures.front().refusal);
  }

  CleaningHome home;
};

TEST_F(RemovalGuardTests, refusesByThePathAlone) {
  home.write("ignored/inner/file");
  home.write("holder/ignored/file");
  home.write("holder/other");
  home.write("mounted/volume/file");
  home.write("plain");
  home.write(".local/share/Quorvane/own");
  home.write(".local/share/Trash/files/old");
  home.write(".local/share/Trash/info/old.trashinfo");
  home.folder.makeLink("link-to-ignored", "ignored/inner");
  home.folder.makeLink("data", ".local/share");
  ASSERT_TRUE(home.ignoreStore->add(home.at("ignored")));
  ASSERT_TRUE(home.ignoreStore->add(home.at("holder/ignored")));
  home.madeVolumes.made = std::vector{home.at("mounted/volume")};
  const std::string root = home.folder.path().bytes;
  const std::string protectedText = "cleanup.failure.protected protected";
  const std::string ignored = "protection.error.ignored protected";
  const std::string mount = "cleanup.failure.mountPoint protected";
  const std::pair<std::string, std::string> cases[] = {
      {"", protectedText},
      {"plain", protectedText},
      {"../" + root + "/plain", protectedText},
      {"/", protectedText},
      {"//", protectedText},
      {root + "/plain/", protectedText},
      {root + "//plain", protectedText},
      {root + "/./plain", protectedText},
      {root + "/holder/../plain", protectedText},
      {root + "/plain" + std::string(1, '\0'), protectedText},
      {root, protectedText},
      {parentOf({root}).bytes, protectedText},
      {root + "/.local", protectedText},
      {root + "/.local/share/Quorvane", protectedText},
      {root + "/.local/share/Quorvane/own", protectedText},
      {root + "/data/Quorvane/own", protectedText},
      {root + "/.local/share/Trash", protectedText},
      {root + "/.local/share/Trash/files", protectedText},
      {root + "/.local/share/Trash/files/old", protectedText},
      {root + "/.local/share/Trash/info/old.trashinfo", protectedText},
      {root + "/ignored", ignored},
      {root + "/ignored/inner/file", ignored},
      {root + "/holder", ignored},
      {root + "/link-to-ignored", ignored},
      {root + "/mounted", mount},
      {root + "/mounted/volume", mount},
      {root + "/absent", "cleanup.failure.missing missing"},
      {root + "/absent/too", "cleanup.failure.missing missing"},
      {root + "/plain/inside", "protection.error.changed changedAfterScan"},
      {root + "/" + std::string(300, 'n'), "cleanup.failure.system other"},
  };
  for (const auto& [path, refusal] : cases) {
    RemovalRequest request{.id = home.random.uuid(), .name = "n", .path = {path}, .snapshot = {}};
    // A true snapshot, so that nothing else can be the reason.
    const auto canonical = isAbsolute(path) ? home.fileSystem.resolved(standardised({path})) : failure(PosixError{});
    if (canonical && isBelow(*canonical, home.folder.path()))
      request.snapshot = home.request(relativeTo(home.folder.path(), *canonical)).snapshot;
    if (path.ends_with("link-to-ignored")) request.snapshot = home.request("link-to-ignored").snapshot;
    EXPECT_EQ(fateOf(request), refusal) << path;
  }
  for (const char* kept : {"plain", "holder/other", ".local/share/Trash/files/old", "mounted/volume/file"})
    EXPECT_TRUE(home.holds(kept)) << kept;
  EXPECT_EQ(fateOf(home.request("holder/other")), "moved") << "beside an ignored place";
}

TEST_F(RemovalGuardTests, refusesItsOwnPlacesUnderTheNameOfABindMount) {
  home.write(".local/share/Quorvane/own");
  home.folder.makeFolders("again");
  const std::string local = home.at(".local").bytes, again = home.at("again").bytes;
  if (::mount(local.c_str(), again.c_str(), nullptr, MS_BIND, nullptr) != 0)
    GTEST_SKIP() << "skipped: mounting is not permitted";
  const std::string share = fateOf(home.request("again/share")), own = fateOf(home.request("again/share/Quorvane"));
  ASSERT_EQ(::umount(again.c_str()), 0);
  EXPECT_EQ(share, "cleanup.failure.protected protected");
  EXPECT_EQ(own, "cleanup.failure.protected protected");
}

TEST_F(RemovalGuardTests, refusesAMountThatNobodyListed) {
  home.write("item/inner/file");
  const std::string point = home.at("item/inner").bytes;
  const RemovalRequest request = home.request("item");
  if (::mount("none", point.c_str(), "tmpfs", 0, "size=1m") != 0) GTEST_SKIP() << "skipped: mounting is not permitted";
  const std::string fate = fateOf(request);
  ASSERT_EQ(::umount(point.c_str()), 0);
  EXPECT_EQ(fate, "cleanup.failure.mountPoint protected");
}

TEST_F(RemovalGuardTests, refusesWhatIsNotWhatWasReviewed) {
  const std::string changed = "protection.error.changed changedAfterScan";
  struct Case {
    std::string what;
    std::function<void(RemovalRequest&)> change;
    std::string fate;
  };
  const auto exchange = [this](const std::string& one, const std::string& other) {
    std::filesystem::rename(home.at(one).bytes, home.at("aside").bytes);
    std::filesystem::rename(home.at(other).bytes, home.at(one).bytes);
  };
  const std::vector<Case> cases = {
      {"nothing", [](RemovalRequest&) {}, "moved"},
      {"a file written in place", [this](RemovalRequest&) { home.write("in/item/deep/file", "CONTENT"); }, changed},
      {"a file more", [this](RemovalRequest&) { home.write("in/item/deep/new"); }, changed},
      {"a file less", [this](auto&) { std::filesystem::remove(home.at("in/item/deep/file").bytes); }, changed},
      {"permissions", [this](auto&) { ::chmod(home.at("in/item/deep").bytes.c_str(), 0711); }, changed},
      {"another folder", [&](RemovalRequest&) { exchange("in/item", "like it"); }, changed},
      {"a link in its place",
       [&](RemovalRequest&) {
         home.folder.makeLink("a link", home.at("like it").bytes);
         exchange("in/item", "a link");
       },
       changed},
      {"a link above it",
       [this](RemovalRequest&) {
         std::filesystem::rename(home.at("in").bytes, home.at("moved").bytes);
         home.folder.makeLink("in", "moved");
       },
       changed},
      {"gone", [this](auto&) { std::filesystem::remove_all(home.at("in/item").bytes); },
       "cleanup.failure.missing missing"},
      {"no snapshot", [](RemovalRequest& request) { request.snapshot.reset(); }, changed},
      {"another's path", [this](auto& request) { request.snapshot->canonicalPath = home.at("like it"); }, changed},
      {"another digest", [](RemovalRequest& request) { request.snapshot->digest.clear(); }, changed},
      {"another identity", [](RemovalRequest& request) { ++request.snapshot->identity.inode; }, changed},
  };
  for (const Case& each : cases) {
    for (const char* old : {"in", "moved", "aside", "like it", "a link"})
      std::filesystem::remove_all(home.at(old).bytes);
    home.write("in/item/deep/file");
    home.write("like it/deep/file");
    RemovalRequest request = home.request("in/item");
    ASSERT_TRUE(request.snapshot);
    each.change(request);
    EXPECT_EQ(fateOf(request), each.fate) << each.what;
    EXPECT_EQ(home.hasEntry("in/item"), each.fate != "moved" && each.what != "gone") << each.what;
  }
}

TEST_F(RemovalGuardTests, refusesWhatCannotBeReadAsAWhole) {
  home.write("item/inner/file");
  RemovalRequest request = home.request("item");
  home.fileSystem.countOnly({FileCall::list});
  home.fileSystem.failAt(home.fileSystem.calls() + 2, FaultSpan::fromThereOn, EACCES);
  EXPECT_EQ(fateOf(request), "protection.error.changed changedAfterScan") << "it could be read when it was reviewed";
  request.snapshot.reset();
  request.id = home.random.uuid();
  EXPECT_EQ(fateOf(request), "cleanup.failure.permission permission");
  EXPECT_TRUE(home.holds("item/inner/file"));
}

TEST_F(RemovalGuardTests, refusesWhatAProcessUses) {
  home.write("item/file");
  const RunningProcess opens{
      .program = "p", .isInspectable = true, .workingFolder = {}, .openPaths = {home.at("item/file")}};
  const RunningProcess stands{.program = "p", .isInspectable = true, .workingFolder = home.at("item"), .openPaths = {}};
  for (const RunningProcess& process : {opens, stands}) {
    home.processes.processes = std::vector{process};
    EXPECT_EQ(fateOf(home.request("item")), "protection.error.fileInUse inUse");
  }
  home.processes.processes = failure(PosixError{EACCES});
  EXPECT_EQ(fateOf(home.request("item")), "protection.error.fileUseUnavailable inUse");
  home.processes.processes = std::vector<RunningProcess>{};
  EXPECT_EQ(fateOf(home.request("item")), "moved");
}

TEST_F(RemovalGuardTests, looksAnewAtWhatIsUsedAfterASecond) {
  for (const char* name : {"a", "b"}) home.write(name);
  const auto requests = home.requests({"a", "b"});
  RemovalChecks checks;
  checks.measured = [&](std::size_t index, const TreeMeasurement&) -> std::optional<RemovalRefusal> {
    if (index == 0) return std::nullopt;
    home.processes.processes = std::vector{
        RunningProcess{.program = "p", .isInspectable = true, .workingFolder = {}, .openPaths = {home.at("b")}}};
    home.clock.advanceUptime(1001ms);
    return std::nullopt;
  };
  EXPECT_EQ(fates(home, requests, home.remove(requests, {}, checks)),
            (Fates{{"a", "moved"}, {"b", "protection.error.fileInUse inUse"}}));
}

TEST_F(RemovalGuardTests, aRunThatCannotBeGuardedIsRefusedAsAWhole) {
  home.write("item");
  const auto requests = home.requests({"item"});
  const auto refusal = [&] { return home.remover.remove(requests, {}, {}).error(); };
  {
    const auto other = home.history.open();
    ASSERT_TRUE(other);
    EXPECT_EQ(std::get<RecoveryStoreError>(refusal()).fault, RecoveryStoreFault::busy);
  }
  home.madeVolumes.made = failure(PosixError{EIO});
  EXPECT_EQ(std::get<PosixError>(refusal()), PosixError{EIO});
  home.madeVolumes.made = std::vector<FilePath>{};
  home.write(".local/share/Quorvane/ignored-paths.json", "no rules");
  EXPECT_EQ(std::get<IgnoreRuleError>(refusal()).fault, IgnoreRuleFault::undecodable);
  EXPECT_TRUE(home.holds("item"));
  EXPECT_THAT(home.recorded(), SizeIs(0));
}

}  // namespace
}  // namespace quorvane
