#include "quorvane/platform/linux/TrashInfo.h"

#include "quorvane/base/Utf8.h"
#include "quorvane/platform/linux/DirectorySizes.h"
#include "quorvane/platform/linux/TrashName.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <set>

#include <time.h>

namespace quorvane {
namespace {

const Uuid someMove = uuidFromText("6F9619FF-8B86-4011-B42D-00C04FC964FF").value();

/// Sets the time zone of the process for one test.
class TimeZone {
 public:
  explicit TimeZone(const char* zone) {
    ::setenv("TZ", zone, 1);  // NOLINT(concurrency-mt-unsafe): no other thread runs
    ::tzset();
  }
  ~TimeZone() {
    ::unsetenv("TZ");  // NOLINT(concurrency-mt-unsafe)
    ::tzset();
  }
};

TEST(TrashInfoTests, writesLocalTimeAndEncodesEveryByteThatIsNotPlain) {
  const TimeZone zone("XXX-5:30");
  EXPECT_EQ(trashInfoText("/a b/%\n\xFF.~", dateFromIsoText("2026-11-21T20:04:03Z").value(), someMove),
            "[Trash Info]\nPath=/a%20b/%25%0A%FF.~\nDeletionDate=2026-11-22T01:34:03\n"
            "X-Quorvane-Move=6F9619FF-8B86-4011-B42D-00C04FC964FF\n");
}

TEST(TrashInfoTests, readsWhatAnybodyWroteAndKnowsWhatWasNotCompleted) {
  struct Case {
    const char* text;
    std::optional<TrashInfo> info;
  };
  const Case cases[] = {
      {"[Trash Info]\nPath=/a%20b\nDeletionDate=x\nX-Quorvane-Move=6f9619ff-8b86-4011-b42d-00c04fc964ff\n",
       TrashInfo{"/a b", someMove}},
      {"[Trash Info]\nNew=1\n\nDeletionDate=x\nPath=r/\xC3\xA4 raw\n", TrashInfo{"r/\xC3\xA4 raw"}},
      {"[Trash Info]\nPath=a\nPath=b\n[Other]\nX-Quorvane-Move=6F9619FF-8B86-4011-B42D-00C04FC964FF\n", TrashInfo{"a"}},
      {"[Trash Info]\nPath=a\nX-Quorvane-Move=6F9619FF\n", TrashInfo{"a"}},
      {"", {}},
      {"[Trash Info]\n", {}},
      {"[Trash Info]\nPath=\n", {}},
      {"[Trash Info]\nPath=/cut", {}},
      {"[Trash Info]\nPath=/a%0\n", {}},
      {"[Trash Info]\nPath=/a%00b\n", {}},
      {"Path=/a\n", {}},
      {"[Other]\nPath=/a\n", {}},
  };
  for (const Case& each : cases) EXPECT_EQ(trashInfoFromText(each.text), each.info) << each.text;
}

TEST(TrashNameTests, keepsTheExtensionAndLeavesRoomForTheNote) {
  EXPECT_EQ(trashName("a.tar.gz", someMove, 1), "a.tar.gz");
  EXPECT_EQ(trashName("a.tar.gz", someMove, 2), "a.tar.2.gz");
  EXPECT_EQ(trashName("Cache", someMove, 100), "Cache.100");
  EXPECT_EQ(trashName(".cache", someMove, 3), ".cache.3");
  EXPECT_EQ(trashName("a.log", someMove, 102), "a.6F9619FF-8B86-4011-B42D-00C04FC964FF-2.log");

  std::string umlauts;
  for (int i = 0; i < 125; ++i) umlauts += "\xC3\xA4";
  std::set<std::string> names;
  for (const std::string& name : {umlauts + ".txt", "x" + umlauts + ".txt", std::string(255, '\x80'),
                                  "a." + std::string(253, 'e'), std::string(246, 'n')}) {
    for (const unsigned attempt : {1u, 2u, mostTrashNames}) {
      const std::string leaf = trashName(name, someMove, attempt);
      EXPECT_LE(leaf.size(), 245u);
      EXPECT_GE(leaf.size(), 244u);
      EXPECT_EQ(isValidUtf8(leaf), isValidUtf8(name));
      EXPECT_EQ(leaf.ends_with(".txt"), name.ends_with(".txt"));
      EXPECT_TRUE(names.insert(leaf).second || name.starts_with("x")) << leaf;
    }
  }
}

TEST(DirectorySizesTests, refusesTheWholeTextForOneBadLine) {
  const std::string good = "4096 -5 a%20b%0A\n";
  EXPECT_THAT(directorySizesFromText(good + "0 1 x y\n").value(),
              testing::ElementsAre(DirectorySize{"a b\n", 4096, -5}, DirectorySize{"x y", 0, 1}));
  for (const char* bad : {"\n", "1 2\n", "1 2 \n", "1 2 a%2Fb\n", "1 2 ..\n", "-1 2 a\n", "x 2 a\n", "1 x a\n",
                          " 1 2 a\n", "1 2 cut", "99999999999999999999 2 a\n", "1 2 %0\n"})
    EXPECT_FALSE(directorySizesFromText(good + bad)) << bad;
}

}  // namespace
}  // namespace quorvane
