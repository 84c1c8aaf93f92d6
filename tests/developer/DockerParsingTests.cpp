#include "quorvane/developer/DockerContexts.h"
#include "quorvane/developer/DockerListing.h"
#include "quorvane/developer/DockerPruneAnswer.h"
#include "quorvane/developer/DockerSizeText.h"
#include "quorvane/developer/DockerUsageTables.h"

#include <gtest/gtest.h>

#include <string>

namespace quorvane {
namespace {

TEST(DockerParsingTests, readsSizes) {
  const struct {
    const char* text;
    std::int64_t bytes;
  } cases[] = {
      {"0B", 0},
      {"512", 512},
      {"512 kB", 512'000},
      {"1.5kB", 1'500},
      {"1.5KiB", 1'536},
      {"1.15MB", 1'150'000},  // not one byte less
      {"1.2GB", 1'200'000'000},
      {"8TiB", 8'796'093'022'208},
      {"9223372TB", 9'223'372'000'000'000'000},
  };
  for (const auto& each : cases) EXPECT_EQ(dockerSize(each.text), each.bytes) << each.text;
  for (const std::string& text :
       {std::string(400, '9'), std::string("9223373TB"), std::string("9223372036854775808"), std::string("12 XB"),
        std::string(), std::string("kB"), std::string("-1B"), std::string("1.kB"), std::string(".5kB"),
        std::string("1e3"), std::string(" 1B"), std::string("1B "), std::string("1,5kB"), std::string("N/A")})
    EXPECT_EQ(dockerSize(text), std::nullopt) << text;
  EXPECT_EQ(dockerContainerSize("1.5kB (virtual 762kB)"), 1'500);
  EXPECT_EQ(dockerContainerSize("(virtual 762kB)"), std::nullopt);
}

const std::string imageID = "sha256:" + std::string(64, 'a');

std::string imageLine(const std::string& id, const std::string& size = "762kB") {
  return R"({"ID":")" + id + R"(","Repository":"tiny","Tag":"1","CreatedSince":"2 days ago","Size":")" + size + "\"}\n";
}

TEST(DockerParsingTests, leavesOutLinesThatDoNotDecodeAndCountsThem) {
  const DockerImageRecord record{imageID, "tiny", "1", "2 days ago", 762'000};
  const std::string good = imageLine(imageID);
  EXPECT_EQ(dockerImages(good), (DockerListing<DockerImageRecord>{{record}, 0}));
  EXPECT_EQ(dockerImages(good.substr(0, good.size() - 1) + "\r\n").records.size(), 1U);
  for (const std::string& bad :
       {std::string("garbage\n"), std::string("\n"), std::string("[1]\n"), std::string("{\"ID\":\n"),
        std::string("{\"ID\":\"\xff\"}\n"), imageLine("aaaaaaaaaaaa"), imageLine(imageID + "0"),
        imageLine("sha256:" + std::string(64, 'A')), imageLine("--force"), imageLine(imageID, "N/A")})
    EXPECT_EQ(dockerImages(bad + good), (DockerListing<DockerImageRecord>{{record}, 1})) << bad;
  EXPECT_EQ(dockerTexts("\"a\"\nb\n\"c\"").records, (std::vector<std::string>{"a", "c"}));
}

TEST(DockerParsingTests, readsContainersAndVolumes) {
  const std::string id(64, 'b');
  const auto containers = dockerContainers(
      R"x({"ID":")x" + id +
      R"x(","Names":"web","Image":"tiny:1","State":"exited","Status":"Exited (0)","RunningFor":"2 days ago",)x"
      R"x("Size":"0B (virtual 762kB)","Labels":"a=b,com.docker.compose.project=shop","Platform":null})x");
  ASSERT_TRUE(containers.isComplete());
  EXPECT_EQ(containers.records.at(0),
            (DockerContainerRecord{id, "web", "tiny:1", "exited", "Exited (0)", "2 days ago", 0, "shop"}));
  EXPECT_EQ(dockerVolumes(R"({"Name":"data","Driver":"local","Labels":"k=v"})").records.at(0),
            (DockerVolumeRecord{"data", "local", std::nullopt, std::nullopt, "k=v"}));
  EXPECT_EQ(dockerVolumes(R"({"Driver":"local","Labels":""})").undecodedCount, 1);
}

TEST(DockerParsingTests, readsTheSummaryOfKindsThatItKnows) {
  const auto lines = dockerUsageLines(R"({"Type":"Local Volumes","Active":"1","Size":"1.5kB","TotalCount":"4"}
{"Type":"Models","Active":"1","Size":"1.5kB","TotalCount":"4"}
{"Type":"Images","Active":"-1","Size":"1.5kB","TotalCount":"4"})");
  EXPECT_EQ(lines, (DockerListing<DockerUsageLine>{{{DockerResourceKind::volumes, 4, 1, 1500}}, 2}));
}

constexpr const char* volumeTable =
    "Local Volumes space usage:\n\nVOLUME NAME   LINKS     SIZE\ndata          1         1.5kB\nidle          0        "
    " N/A\n";
constexpr const char* cacheTable =
    "Build cache usage: 100B\n\nCACHE ID       CACHE TYPE     SIZE      CREATED         LAST USED       USAGE     "
    "SHARED\n"
    "abc   regular        762kB     3 seconds ago   2 seconds ago   1         true\n"
    "def   source.local   50B       3 seconds ago                   0         false\n"
    "ghi*  regular        1B        3 seconds ago   1 second ago    1         false\n";

TEST(DockerParsingTests, readsTheTablesOfDiskUsage) {
  const auto tables = dockerUsageTables(std::string("Images space usage:\n\n") + volumeTable + "\n" + cacheTable);
  EXPECT_TRUE(tables.hasVolumes);
  EXPECT_EQ(tables.volumes.at("data"), (DockerVolumeUsage{1, 1500}));
  EXPECT_EQ(tables.volumes.at("idle"), (DockerVolumeUsage{0, std::nullopt}));
  EXPECT_TRUE(tables.hasBuildCache);
  const std::vector<DockerBuildCacheRecord> wanted{
      {"abc", "regular", 762'000, "3 seconds ago", "2 seconds ago", 1, true},
      {"def", "source.local", 50, "3 seconds ago", "", 0, false},
      {"ghi", "regular", 1, "3 seconds ago", "1 second ago", 1, false, true}};
  EXPECT_EQ(tables.buildCaches.records, wanted);
}

TEST(DockerParsingTests, doesNotReadTablesThatItDoesNotKnow) {
  const std::string twice = std::string(volumeTable) + "\n" + volumeTable;
  const std::string others = "Local Volumes space usage:\n\nVOLUME NAME   SIZE   LINKS\ndata   0   1\n";
  for (const std::string& text : {std::string(), twice, others, std::string("Local Volumes space usage:\n")})
    EXPECT_FALSE(dockerUsageTables(text).hasVolumes) << text;
  const auto rows = dockerUsageTables(std::string(volumeTable) + "broken\ndata   0   0B\nodd   x   0B\n");
  EXPECT_EQ(rows.undecodedVolumeCount, 1);
  EXPECT_EQ(rows.volumes.at("data"), DockerVolumeUsage{}) << "two rows with one name say nothing of it";
  EXPECT_EQ(rows.volumes.at("odd").referenceCount, std::nullopt);
  const auto caches = dockerUsageTables(std::string(cacheTable) + "ghi   regular   1B   a   b   1   maybe\n");
  EXPECT_EQ(caches.buildCaches.undecodedCount, 1);
}

TEST(DockerParsingTests, readsWhatAPruneRemoved) {
  using Identifiers = std::optional<std::vector<std::string>>;
  const std::string heading = "Deleted build cache objects:\n", total = "Total reclaimed space: 0B\n";
  EXPECT_EQ(prunedBuildCache(heading + "abc\r\ndef\n\n" + total), Identifiers({"abc", "def"}));
  EXPECT_EQ(prunedBuildCache(total), Identifiers(std::in_place));
  for (const std::string& text : {std::string(), heading + "abc\n", "abc\n" + total, heading + "a b\n" + total,
                                  heading + "abc\n\n\n" + total, heading + "abc\n" + total + "def\n"})
    EXPECT_EQ(prunedBuildCache(text), std::nullopt) << text;
}

TEST(DockerParsingTests, readsWhichContextIsCurrent) {
  EXPECT_EQ(shownContext("default\n"), "default");
  for (const char* output : {"", "--help", "two words", "a\nb", "\x1b[0m"})
    EXPECT_EQ(shownContext(output), std::nullopt) << output;
  const std::string other = R"({"Current":false,"Name":"a"})", current = R"({"Current":true,"Name":"b"})";
  EXPECT_EQ(currentContext(other + "\n" + current + "\n"), "b");
  for (const std::string& output : {other, current + "\n" + current, current + "\n{}", std::string("NAME  CURRENT"),
                                    std::string(R"({"Current":true,"Name":"-x"})"), std::string()})
    EXPECT_EQ(currentContext(output), std::nullopt) << output;
}

TEST(DockerParsingTests, knowsAddresses) {
  for (const char* address : {"unix:///var/run/docker.sock", "tcp://10.0.0.1:2375", "ssh://me@host", "npipe:////./x"})
    EXPECT_TRUE(isEndpoint(address)) << address;
  for (const char* text :
       {"", "unix://", "/var/run/docker.sock", "://x", "-H://x", "tcp://a b", "tcp://a\n", "-o=x://y"})
    EXPECT_FALSE(isEndpoint(text)) << text;
  EXPECT_TRUE(isLocalEndpoint("unix:///var/run/docker.sock"));
  EXPECT_FALSE(isLocalEndpoint("tcp://10.0.0.1:2375"));
}

}  // namespace
}  // namespace quorvane
