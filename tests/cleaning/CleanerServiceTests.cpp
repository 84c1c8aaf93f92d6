#include "quorvane/cleaning/CleanerService.h"

#include "tests/support/CleaningHome.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include <sys/stat.h>

namespace quorvane {
namespace {

using namespace std::chrono_literals;
using testing::SizeIs;
using Fates = std::map<std::string, std::string>;

constexpr auto day = 24h;
const std::string tag = "Signature: 8a477f597d28d172789f06886806bc55\n";
const std::string changed = "protection.error.changed changedAfterScan";
const std::string location = "cleanup.failure.location protected";
const std::string protectedText = "cleanup.failure.protected protected";

class CleanerServiceTests : public testing::Test {
 protected:
  RemovalReport clean(const std::vector<ScanItem>& items, const RemovalOptions& options = {}) {
    auto report = CleanerService(home.services(), home.settings, home.remover).clean(items, options);
    EXPECT_TRUE(report.has_value());
    return report ? *std::move(report) : RemovalReport{};
  }

  std::string fateOf(const ScanItem& item) {
    const RemovalReport report = clean({item});
    if (report.movedCount == 1) return "moved";
    return report.failures.empty() ? "nothing" : textOf(report.failures.front().refusal);
  }

  /// A record that claims to be of this place, with its true snapshot.
  ScanItem record(const std::string& relative, SafetyLevel safety) {
    const RemovalRequest request = home.request(relative);
    ScanItem made;
    made.id = request.id;
    made.url = {request.path};
    made.displayName = "made";
    made.safety = safety;
    made.size = request.size;
    made.snapshot = request.snapshot;
    return made;
  }

  ScanItem reviewed(const std::string& relative) { return itemAt(home.scan(), home.at(relative)); }

  CleaningHome home;
};

TEST_F(CleanerServiceTests, movesWhatWasReviewed) {
  home.write(".cache/thumbnails/large/a.png");
  home.write(".cache/tagged/CACHEDIR.TAG", tag);
  home.write(".cache/unheard-of/data");
  home.write(".local/state/app/log/old.log");
  home.write("Downloads/setup.iso");
  home.write("projects/mine/target/CACHEDIR.TAG", tag);
  home.age("", 40 * day);
  const ScanResult result = home.scan();
  const RemovalReport report = clean(result.items);
  EXPECT_THAT(report.failures, SizeIs(0)) << textOf(report.failures.front().refusal);
  EXPECT_EQ(report.movedCount, static_cast<std::int64_t>(result.items.size()));
  for (const char* name : {"thumbnails", "tagged", "unheard-of", "target", "old.log"})
    EXPECT_TRUE(home.isInTrash(name)) << name;
  EXPECT_TRUE(home.scan().items.empty());
}

TEST_F(CleanerServiceTests, judgesEachItemAnew) {
  struct Case {
    std::string what, path;
    std::function<void(ScanItem&)> change;
    std::string fate;
  };
  const auto at = [this](const std::string& relative) { return home.at(relative).bytes; };
  const std::vector<Case> cases = {
      {"nothing", ".cache/tagged", [](ScanItem&) {}, "moved"},
      {"written to", ".cache/tagged", [&](ScanItem&) { home.write(".cache/tagged/more"); }, changed},
      {"the tag goes", ".cache/tagged", [&](auto&) { std::filesystem::remove(at(".cache/tagged/CACHEDIR.TAG")); },
       changed},
      {"gone", ".cache/tagged", [&](auto&) { std::filesystem::remove_all(at(".cache/tagged")); },
       "cleanup.failure.missing missing"},
      {"ignored", ".cache/tagged", [&](ScanItem&) { ASSERT_TRUE(home.ignoreStore->add(home.at(".cache/tagged"))); },
       "protection.error.ignored protected"},
      {"mounted", ".cache/tagged",
       [&](ScanItem&) { home.madeVolumes.made = std::vector{home.at(".cache/tagged/inner")}; },
       "cleanup.failure.mountPoint protected"},
      {"in use", ".cache/tagged",
       [&](ScanItem&) {
         home.processes.processes = std::vector{RunningProcess{
             .program = "p", .isInspectable = true, .workingFolder = home.at(".cache/tagged"), .openPaths = {}}};
       },
       "protection.error.fileInUse inUse"},
      {"blocked by its record", ".cache/tagged", [](ScanItem& item) { item.safety = SafetyLevel::blocked; },
       protectedText},
      {"an installer touched", "Downloads/setup.iso", [&](ScanItem&) { home.write("Downloads/setup.iso", "new"); },
       changed},
  };
  for (const Case& each : cases) {
    home.madeVolumes.made = std::vector<FilePath>{};
    home.processes.processes = std::vector<RunningProcess>{};
    (void)home.ignoreStore->remove(home.at(".cache/tagged").bytes);
    home.write(".cache/tagged/CACHEDIR.TAG", tag);
    home.write(".cache/tagged/inner/data");
    home.write("Downloads/setup.iso");
    home.age("", 40 * day);
    ScanItem item = reviewed(each.path);
    each.change(item);
    EXPECT_EQ(fateOf(item), each.fate) << each.what;
    EXPECT_EQ(home.hasEntry(each.path), each.fate != "moved" && each.what != "gone") << each.what;
  }
}

TEST_F(CleanerServiceTests, believesNoRecord) {
  home.write("Documents/letter");
  home.write(".cache/thumbnails/large/a");
  home.write(".cache/unheard-of/data");
  home.write(".cache/com.nordvpn.app/data");
  home.write(".cache/pip/http/a");
  home.write(".cache/tagged/CACHEDIR.TAG", tag);
  home.write(".cache/tagged/.git/config");
  home.write(".config/app/settings");
  home.write("Downloads/new.iso");
  home.write("Downloads/letter.txt");
  home.age("", 40 * day);
  home.age("Downloads/new.iso", 10 * day);
  home.folder.makeLink(".cache/way", home.at("Documents").bytes);
  const auto safe = SafetyLevel::safe, review = SafetyLevel::review;
  const struct {
    std::string path;
    SafetyLevel safety;
    std::string fate;
  } cases[] = {
      {"Documents/letter", safe, location},
      {"Documents", review, location},
      {".config/app", review, location},
      {".cache/thumbnails/large", safe, location},
      {".cache", safe, location},
      {"Downloads/letter.txt", review, location},
      {"Downloads/new.iso", review, location},
      {".cache/com.nordvpn.app", safe, protectedText},
      {".cache/com.nordvpn.app", review, protectedText},
      {".cache/unheard-of", safe, changed},
      {".cache/tagged", safe, changed},
      {".cache/way", review, location},
      {".cache/unheard-of", review, "moved"},
      {".cache/tagged", review, "moved"},
      {".cache/thumbnails", safe, "moved"},
  };
  for (const auto& each : cases)
    EXPECT_EQ(fateOf(record(each.path, each.safety)), each.fate) << each.path << " " << caseName(each.safety);
  EXPECT_TRUE(home.holds("Documents/letter"));
}

TEST_F(CleanerServiceTests, refusesWhatARecordSaysOfAnotherPlace) {
  home.write(".cache/thumbnails/large/a");
  home.write("Documents/letter");
  home.age("", 2 * day);
  home.folder.makeLink("way", ".cache");
  const std::string root = home.folder.path().bytes;
  const std::pair<std::string, std::string> cases[] = {
      {"", protectedText},
      {".cache/thumbnails", protectedText},
      {root + "/.cache/pip/../thumbnails", protectedText},
      {root + "/.cache/thumbnails/", protectedText},
      {root + "/.cache/../Documents/letter", protectedText},
      {root + "/.cache/thumbnails" + std::string("\0x", 2), protectedText},
      {"/", location},
      {root, location},
      {"/etc/passwd", location},
      {root + "/Documents/letter", location},
      {root + "/.cache/\xff", "cleanup.failure.missing missing"},
      {root + "/way/thumbnails", location},
  };
  for (const auto& [path, fate] : cases) {
    ScanItem item = record(".cache/thumbnails", SafetyLevel::safe);
    item.url = {{path}};
    if (path.ends_with('\xff')) item.snapshot->canonicalPath = {path};
    EXPECT_EQ(fateOf(item), fate) << path;
    EXPECT_TRUE(home.holds(".cache/thumbnails/large/a")) << path;
  }
  EXPECT_TRUE(home.holds("Documents/letter"));
}

TEST_F(CleanerServiceTests, leavesAloneWhatIsRiskyAtThisMoment) {
  home.write(".cache/thumbnails/large/a");
  home.age("", 5min);
  EXPECT_EQ(fateOf(record(".cache/thumbnails", SafetyLevel::safe)),
            "reason.preflight.recentlyWritten changedAfterScan");
  EXPECT_EQ(fateOf(record(".cache/thumbnails", SafetyLevel::review)), "moved") << "a person has looked at it";
  home.write(".cache/go-build/00/a");
  home.age(".cache/go-build", 23h);
  EXPECT_EQ(fateOf(record(".cache/go-build", SafetyLevel::review)), protectedText) << "a build of today";
}

TEST_F(CleanerServiceTests, leavesSystemServicesAlone) {
  CleaningHome mac(HomeLayout::macos);
  mac.write("Library/Caches/com.apple.something/a");
  mac.write("Library/Caches/org.example/a");
  mac.age("", 2 * day);
  ScanResult result = mac.scan();
  for (ScanItem& item : result.items) item.safety = SafetyLevel::safe;
  const auto report = CleanerService(mac.services(), mac.settings, mac.remover).clean(result.items, {});
  ASSERT_TRUE(report);
  EXPECT_EQ(report->movedCount, 1);
  ASSERT_THAT(report->failures, SizeIs(1));
  EXPECT_EQ(textOf(report->failures[0].refusal), "reason.preflight.systemService protected");
  EXPECT_TRUE(mac.holds("Library/Caches/com.apple.something/a"));
}

TEST_F(CleanerServiceTests, leavesAloneWhatACloudServiceKeeps) {
  home.write("Dropbox/projects/target/CACHEDIR.TAG", tag);
  home.folder.makeLink("projects", "Dropbox/projects");
  home.write(".cache/Dropbox-unrelated/a");
  home.age("", 2 * day);
  ScanItem item = record("Dropbox/projects/target", SafetyLevel::safe);
  EXPECT_EQ(fateOf(item), location);
  item.url = {home.at("projects/target")};
  EXPECT_NE(fateOf(item), "moved");
  EXPECT_TRUE(home.holds("Dropbox/projects/target/CACHEDIR.TAG"));
}

TEST_F(CleanerServiceTests, takesManyHostileRecords) {
  home.write(".cache/thumbnails/large/a");
  home.age("", 2 * day);
  const ScanItem good = record(".cache/thumbnails", SafetyLevel::safe);
  std::vector<ScanItem> items(20'000, good);
  for (std::size_t i = 1; i < items.size(); ++i)
    if (i % 2 == 0) items[i].url = {joined(items[i - 1].url.path, "x")};
  const RemovalReport rehearsal = clean(items, {.isRehearsal = true});
  EXPECT_THAT(rehearsal.wouldMove, SizeIs(1));
  const RemovalReport report = clean(items);
  EXPECT_EQ(report.movedCount, 1);
  EXPECT_THAT(report.failures, SizeIs(items.size() - 1));
}

}  // namespace
}  // namespace quorvane
