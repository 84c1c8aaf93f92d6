#include "quorvane/health/SystemStatusService.h"

#include "quorvane/base/Json.h"
#include "quorvane/health/HealthScore.h"
#include "quorvane/health/ProcessOrder.h"
#include "quorvane/health/SystemStatusDocument.h"
#include "tests/health/MadeSources.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quorvane {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::ElementsAre;

TEST(SystemStatusServiceTests, theFirstSampleHasNoRates) {
  MadeSources machine;
  machine.ticks = CPUTicks{.user = 900, .idle = 100};
  machine.networkCounters = NetworkCounters{5000, 5000};
  machine.batteryState = BatteryState{80, true};
  machine.level = SystemThermalLevel::fair;
  machine.listed = std::vector{SystemProcessSample{1, "init", {"/sbin/init"}, 2, 3}};
  SystemStatusService service(machine.sources());
  const SystemStatusSnapshot wanted{.sampledAt = dateFromTimestamp(1'795'237'443, 0),
                                    .memoryUsedBytes = 25,
                                    .memoryTotalBytes = 100,
                                    .diskAvailableBytes = 40,
                                    .diskTotalBytes = 100,
                                    .batteryPercent = 80,
                                    .isCharging = true,
                                    .thermalLevel = SystemThermalLevel::fair,
                                    .uptime = 60,
                                    .osVersion = "Made 1",
                                    .processorCount = 4,
                                    .topProcesses = *machine.listed,
                                    .notMeasured = {SystemStatusInput::processor, SystemStatusInput::network}};
  EXPECT_EQ(service.sample(), wanted);
  EXPECT_TRUE(service.sample({.withProcesses = false}).topProcesses.empty());
}

TEST(SystemStatusServiceTests, processorPercentIsThatOfTheTicksBetween) {
  const CPUTicks before{.user = 100, .system = 100, .idle = 100, .nice = 100};
  const struct {
    CPUTicks now;
    double percent;
  } cases[] = {
      {{101, 101, 101, 101}, 75},  // nice is busy
      {{100, 100, 200, 100}, 0},  {{200, 100, 100, 100}, 100}, {before, 0},
      {{0, 0, 0, 0}, 0},          {{50, 150, 150, 100}, 50},  // one went down
  };
  for (const auto& [now, percent] : cases) {
    MadeSources machine;
    SystemStatusService service(machine.sources());
    machine.ticks = before;
    service.sample();
    machine.ticks = now;
    EXPECT_EQ(service.sample().cpuPercent, percent) << now.user;
  }
}

TEST(SystemStatusServiceTests, networkRatesAreThoseOfTheTimeBetween) {
  const struct {
    milliseconds elapsed;
    NetworkCounters now;
    double download, upload;
  } cases[] = {
      {seconds(2), {3000, 1200}, 1000, 100},
      {seconds(1), {500, 2000}, 0, 1000},        // an interface was reset
      {milliseconds(0), {1001, 1000}, 1000, 0},  // less than a millisecond counts as one
      {seconds(1), {1000 + (std::uint64_t{1} << 33), 1000}, 8589934592, 0},
  };
  for (const auto& [elapsed, now, download, upload] : cases) {
    MadeSources machine;
    SystemStatusService service(machine.sources());
    machine.networkCounters = NetworkCounters{1000, 1000};
    service.sample();
    machine.time.advanceUptime(elapsed);
    machine.networkCounters = now;
    const SystemStatusSnapshot snapshot = service.sample();
    EXPECT_EQ(snapshot.networkDownloadBytesPerSecond, download);
    EXPECT_EQ(snapshot.networkUploadBytesPerSecond, upload);
    EXPECT_TRUE(isMeasured(snapshot, SystemStatusInput::network));
  }
}

TEST(SystemStatusServiceTests, whatCannotBeReadIsEmptyAndNamed) {
  MadeSources machine;
  SystemStatusService service(machine.sources());
  service.sample();
  machine.ticks = failure(unreadable);
  machine.memoryUse = failure(unreadable);
  machine.volume = failure(unreadable);
  machine.networkCounters = failure(unreadable);
  machine.batteryState = failure(unreadable);
  machine.level = failure(unreadable);
  machine.uptime = failure(unreadable);
  machine.listed = failure(unreadable);
  machine.time.advanceUptime(seconds(60));
  const SystemStatusSnapshot snapshot = service.sample();
  SystemStatusSnapshot wanted{.sampledAt = snapshot.sampledAt, .osVersion = "Made 1", .processorCount = 4};
  const auto all = allCases<SystemStatusInput>();
  wanted.notMeasured.assign(all.begin(), all.end());
  EXPECT_EQ(snapshot, wanted);
  EXPECT_EQ(healthScore(snapshot), HealthScore{});

  machine.ticks = CPUTicks{.user = 1'000'000};
  machine.networkCounters = NetworkCounters{1'000'000'000, 0};
  const SystemStatusSnapshot again = service.sample();
  EXPECT_EQ(again.cpuPercent, 0) << "a counter that was missing in between tells no rate";
  EXPECT_EQ(again.networkDownloadBytesPerSecond, 0);
}

TEST(SystemStatusServiceTests, whatChangesSlowlyIsReadNowAndThen) {
  MadeSources machine;
  SystemStatusService service(machine.sources());
  for (int i = 0; i < 10; ++i) {
    service.sample();
    machine.time.advanceUptime(seconds(2));
  }
  EXPECT_EQ(machine.sensorReadings, 2) << "every ten seconds";
  EXPECT_EQ(machine.forgettings, 1);
  machine.time.advanceUptime(seconds(40));
  service.sample();
  EXPECT_EQ(machine.forgettings, 2) << "every minute";
}

/// A snapshot with these percentages.
SystemStatusSnapshot snapshotOf(double processor, double memory, double disk, SystemThermalLevel level) {
  SystemStatusSnapshot snapshot;
  snapshot.cpuPercent = processor;
  snapshot.memoryUsedBytes = static_cast<std::int64_t>(memory * 10);
  snapshot.diskAvailableBytes = 1000 - static_cast<std::int64_t>(disk * 10);
  snapshot.memoryTotalBytes = snapshot.diskTotalBytes = 1000;
  snapshot.thermalLevel = level;
  return snapshot;
}

TEST(HealthScoreTests, followsItsTables) {
  using enum SystemHealthLevel;
  using Thermal = SystemThermalLevel;
  const struct {
    double processor, memory, disk;
    SystemThermalLevel thermal;
    int score;
    SystemHealthLevel level;
  } cases[] = {
      {90, 90, 95, Thermal::critical, 0, attention}, {54.9, 59.9, 84.9, Thermal::nominal, 100, healthy},
      {75, 0, 0, Thermal::nominal, 85, healthy},     {55, 60, 85, Thermal::fair, 68, fair},
      {55, 0, 0, Thermal::nominal, 93, healthy},     {74.9, 0, 0, Thermal::nominal, 93, healthy},
      {89.9, 0, 0, Thermal::nominal, 85, healthy},   {90, 0, 0, Thermal::nominal, 75, fair},
      {100, 0, 0, Thermal::nominal, 75, fair},       {0, 60, 0, Thermal::nominal, 95, healthy},
      {0, 74.9, 0, Thermal::nominal, 95, healthy},   {0, 75, 0, Thermal::nominal, 88, healthy},
      {0, 89.9, 0, Thermal::nominal, 88, healthy},   {0, 90, 0, Thermal::nominal, 75, fair},
      {0, 0, 85, Thermal::nominal, 88, healthy},     {0, 0, 94.9, Thermal::nominal, 88, healthy},
      {0, 0, 95, Thermal::nominal, 75, fair},        {0, 0, 0, Thermal::fair, 92, healthy},
      {0, 0, 0, Thermal::serious, 80, fair},         {0, 0, 0, Thermal::critical, 65, fair},
      {55, 0, 0, Thermal::critical, 58, attention},
  };
  for (const auto& [processor, memory, disk, thermal, score, level] : cases) {
    const HealthScore health = healthScore(snapshotOf(processor, memory, disk, thermal));
    EXPECT_EQ(health.score, score) << processor << " " << memory << " " << disk;
    EXPECT_EQ(health.level, level) << processor << " " << memory << " " << disk;
  }
  for (const auto& [score, level] :
       {std::pair(100, healthy), {85, healthy}, {84, fair}, {65, fair}, {64, attention}, {0, attention}})
    EXPECT_EQ(healthLevel(score), level) << score;
}

TEST(HealthScoreTests, explainsItself) {
  const HealthScore health = healthScore(snapshotOf(92.5, 10, 87, SystemThermalLevel::serious));
  EXPECT_THAT(health.deductions,
              ElementsAre(HealthDeduction{SystemStatusInput::processor, 92.5, 90, 25, "status.advice.processor"},
                          HealthDeduction{SystemStatusInput::disk, 87, 85, 12, "status.advice.disk"},
                          HealthDeduction{SystemStatusInput::thermal, 2, 2, 20, "status.advice.thermal"}));
  EXPECT_EQ(health.score, 100 - 25 - 12 - 20);
}

TEST(SystemStatusSnapshotTests, percentagesStayWithinTheirLimits) {
  const struct {
    std::int64_t used, memoryTotal, available, diskTotal;
    double memory, disk;
  } cases[] = {{1, 4, 1, 4, 25, 75}, {9, 4, 9, 4, 100, 0}, {-9, 4, -9, 4, 0, 100},
               {5, 0, 5, 0, 0, 0},   {5, -4, 5, -4, 0, 0}, {INT64_MAX, INT64_MAX, INT64_MIN, INT64_MAX, 100, 100}};
  for (const auto& [used, memoryTotal, available, diskTotal, memory, disk] : cases) {
    SystemStatusSnapshot snapshot;
    snapshot.memoryUsedBytes = used;
    snapshot.memoryTotalBytes = memoryTotal;
    snapshot.diskAvailableBytes = available;
    snapshot.diskTotalBytes = diskTotal;
    EXPECT_EQ(memoryPercent(snapshot), memory);
    EXPECT_EQ(diskUsedPercent(snapshot), disk);
  }
}

TEST(SystemStatusDocumentTests, holdsTheRecordAndWhatFollowsFromIt) {
  SystemStatusSnapshot snapshot = snapshotOf(80, 50, 25, SystemThermalLevel::nominal);
  snapshot.topProcesses = {{7, "odd\xff", {"/bin/odd\xff"}, 1.5, 4096}};
  snapshot.notMeasured = {SystemStatusInput::thermal};
  const std::string line = jsonLine(snapshot);
  EXPECT_EQ(line.find('\n'), line.size() - 1) << "one line";
  const Json document = parsedJson(jsonText(snapshot)).value();
  EXPECT_EQ(parsedJson(line).value(), document);
  EXPECT_EQ(document["deductions"].dump(),
            R"([{"input":"processor","key":"status.advice.processor","points":15,"threshold":75.0,"value":80.0}])");
  EXPECT_EQ(document["healthScore"], 85);
  EXPECT_EQ(document["healthLevel"], "healthy");
  EXPECT_EQ(document["memoryPercent"], 50.0);
  EXPECT_EQ(document["diskUsedPercent"], 25.0);
  EXPECT_EQ(document["notMeasured"], Json::array({"thermal"}));
  EXPECT_EQ(document["sampledAt"], "1970-01-01T00:00:00Z");
  EXPECT_FALSE(document.contains("batteryPercent"));
  EXPECT_EQ(document["topProcesses"][0]["name"], "odd\xEF\xBF\xBD");
  EXPECT_EQ(document["topProcesses"][0]["executablePath"], "file:///bin/odd%FF");
}

TEST(ProcessOrderTests, putsTheBusiestFirst) {
  const SystemProcessSample small{1, "small", {}, 5, 10}, large{2, "large", {}, 5, 90}, idle{3, "idle", {}, 0, 50};
  EXPECT_THAT(ordered({idle, small, large}, SystemProcessSortMode::cpu), ElementsAre(large, small, idle));
  EXPECT_THAT(ordered({idle, small, large}, SystemProcessSortMode::memory), ElementsAre(large, idle, small));
}

}  // namespace
}  // namespace quorvane
