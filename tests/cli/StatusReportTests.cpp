#include "quorvane/app/cli/reports/StatusReport.h"

#include "quorvane/app/cli/reports/StatusBoard.h"
#include "quorvane/app/cli/terminal/Sparkline.h"
#include "quorvane/app/messages/TextLayout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <sstream>

namespace quorvane {
namespace {

constexpr std::int64_t gib = std::int64_t{1} << 30;

/// A laptop that is not well.
SystemStatusSnapshot laptop() {
  SystemStatusSnapshot snapshot{.cpuPercent = 92.7,
                                .memoryUsedBytes = 12 * gib,
                                .memoryTotalBytes = 16 * gib,
                                .diskAvailableBytes = 50'000'000'000,
                                .diskTotalBytes = 500'000'000'000,
                                .networkDownloadBytesPerSecond = 1'234'567,
                                .networkUploadBytesPerSecond = 890,
                                .batteryPercent = 41.2,
                                .isCharging = true,
                                .thermalLevel = SystemThermalLevel::fair,
                                .uptime = 93784,
                                .osVersion = "Debian GNU/Linux 12 (bookworm)",
                                .processorCount = 8};
  snapshot.topProcesses = {{4711, "compiler", {"/usr/bin/compiler"}, 183.4, gib}, {7, "bad\x1b[2J\n", {}, 0, 4096}};
  snapshot.notMeasured = {SystemStatusInput::network, SystemStatusInput::uptime};
  return snapshot;
}

const MessageCatalogue& english() {
  static const MessageCatalogue catalogue = MessageCatalogue::english();
  return catalogue;
}

std::string report(const SystemStatusSnapshot& snapshot, const TextStyle& style,
                   SystemProcessSortMode sort = SystemProcessSortMode::cpu) {
  return statusReport(snapshot, sort, {english(), std::nullopt, style});
}

TEST(StatusReportTests, saysEachFactOnALineWherePlain) {
  EXPECT_EQ(
      report(laptop(), {}),
      "Health: 43 of 100, needs attention\n"
      "Debian GNU/Linux 12 (bookworm)\n"
      "Processor: 92 %, 8 processors\n"
      "Memory: 75 %, 12.0 GiB of 16.0 GiB\n"
      "Disk: 90 %, 50.0 GB of 500 GB free\n"
      "Network: not measured\n"
      "Battery: 41 %, charging\n"
      "Heat: warm\n"
      "\n"
      "-25 The processor is 92 % busy, 90 or more: look at the busiest programs; one that hangs can be ended.\n"
      "-12 Memory is 75 % used, 75 or more: close what you do not need; --sort memory shows the largest programs.\n"
      "-12 The disk is 90 % full, 85 or more: `quorvane scan` shows what can be cleaned.\n"
      "-8 The machine is warm: give it air and end heavy work; it slows itself down to cool off.\n"
      "Not measured: Uptime\n"
      "\n"
      "4711\t183.4\t1.0 GiB\tcompiler\t/usr/bin/compiler\n"
      "7\t0.0\t4 KiB\tbad\\x1b[2J\\n\t\n");
}

TEST(StatusReportTests, drawsBarsOnATerminal) {
  SystemStatusSnapshot snapshot = laptop();
  snapshot.notMeasured = {};
  snapshot.batteryPercent = std::nullopt;
  snapshot.cpuPercent = 50;
  const std::string text = report(snapshot, {.isLaidOut = true, .characters = CharacterSet::unicode, .columns = 60});
  EXPECT_EQ(text.substr(0, text.find("\n\n  −12")),
            "  Health     68 of 100, fair   Debian GNU/Lin…m), up 1 d 2 h\n"
            "\n"
            "  Processor   50 %  ━━━━━─────  8 processors\n"
            "  Memory      75 %  ━━━━━━━━──  12.0 GiB of 16.0 GiB\n"
            "  Disk        90 %  ━━━━━━━━━─  50.0 GB of 500 GB free\n"
            "  Network                       ↓ 1.2 MB/s  ↑ 890 bytes/s\n"
            "  Heat                          warm");
  EXPECT_TRUE(
      text.ends_with("      PID    CPU %      Memory  Program\n"
                     "     4711    183.4     1.0 GiB  compiler\n"
                     "        7      0.0       4 KiB  bad\\x1b[2J\\n\n"))
      << text;
}

TEST(SparklineTests, showsTheNewestAtTheRight) {
  const std::vector<double> values{-5, 0, 50, 99.9, 100, 1e300};
  EXPECT_EQ(sparkline(values, 100, 8, CharacterSet::unicode), "  ▁▁▅███");
  EXPECT_EQ(sparkline(values, 100, 3, CharacterSet::ascii), "###");
  EXPECT_EQ(sparkline(values, 0, 2, CharacterSet::unicode), "▁▁");
  EXPECT_EQ(sparkline({}, 100, 2, CharacterSet::unicode), "  ");
  EXPECT_EQ(sparkline(values, 100, 0, CharacterSet::unicode), "");
}

/// The text as a terminal shows it.
std::string withoutColours(const std::string& text) {
  return std::regex_replace(text, std::regex("\x1b\\[[0-9]*m"), "");
}

TEST(StatusBoardTests, fitsEveryTerminal) {
  const std::vector<double> history(150, 70.0);
  SystemStatusSnapshot snapshot = laptop();
  for (int i = 0; i < 18; ++i)
    snapshot.topProcesses.push_back({i, std::string(90, 'n'), {"/" + std::string(300, 'p')}, 1, gib});
  for (const std::size_t columns : {20U, 40U, 60U, 61U, 79U, 80U, 100U, 133U, 250U}) {
    for (const std::size_t rows : {1U, 2U, 5U, 10U, 16U, 20U, 24U, 40U, 200U}) {
      const TextStyle style{
          .isLaidOut = true, .hasColours = true, .characters = CharacterSet::unicode, .columns = columns};
      const ReportStyle reportStyle{english(), std::nullopt, style};
      const std::string board = statusBoard(snapshot, {history, history, history}, {}, rows, reportStyle);
      EXPECT_EQ(static_cast<std::size_t>(std::ranges::count(board, '\n')), rows) << columns;
      std::istringstream lines(withoutColours(board));
      for (std::string line; std::getline(lines, line);) EXPECT_LE(displayWidth(line), columns) << line;
    }
  }
}

TEST(StatusBoardTests, tellsAllKeysInSixtyColumns) {
  const ReportStyle style{english(), std::nullopt, {.isLaidOut = true, .columns = 60}};
  for (const auto sort : {SystemProcessSortMode::cpu, SystemProcessSortMode::memory}) {
    StatusBoardState state{.sort = sort, .hasKeys = true, .interval = std::chrono::milliseconds(500)};
    EXPECT_TRUE(statusBoard({}, {}, state, 24, style).ends_with("r now  every 0.5 s\n"));
    state.isPaused = true;
    EXPECT_TRUE(statusBoard({}, {}, state, 24, style).ends_with("r now\n"));
  }
}

TEST(StatusBoardTests, tellsHowToEndItInEveryWidth) {
  for (std::size_t columns = 20; columns < 60; ++columns) {
    const ReportStyle style{english(), std::nullopt, {.isLaidOut = true, .columns = columns}};
    EXPECT_TRUE(statusBoard({}, {}, {}, 1, style).starts_with("  q quit")) << columns;
    EXPECT_TRUE(statusBoard({}, {}, {.isPaused = true}, 1, style).starts_with("  PAUSED  q quit")) << columns;
  }
  const ReportStyle narrow{english(), std::nullopt, {.isLaidOut = true, .columns = 40}};
  EXPECT_EQ(statusBoard({}, {}, {}, 1, narrow), "  q quit  s by memory  space pause\n");
}

TEST(StatusBoardTests, scalesTheNetworkByWhatItDraws) {
  const ReportStyle style{
      english(), std::nullopt, {.isLaidOut = true, .characters = CharacterSet::unicode, .columns = 60}};
  std::vector<double> network(150, 10.0);
  network.front() = 1e9;  // too long ago to be drawn
  const std::string board = statusBoard({.osVersion = "x"}, {{}, {}, network}, {}, 24, style);
  EXPECT_TRUE(board.contains("██████████")) << board;
}

TEST(StatusBoardTests, dropsProcessesFirst) {
  const ReportStyle style{english(), std::nullopt, {.isLaidOut = true, .columns = 80}};
  SystemStatusSnapshot snapshot = laptop();
  snapshot.notMeasured = {};
  const auto board = [&](std::size_t rows) { return statusBoard(snapshot, {}, {.isPaused = true}, rows, style); };
  EXPECT_TRUE(board(40).contains("bad\\x1b"));
  EXPECT_FALSE(board(17).contains("compiler"));
  EXPECT_TRUE(board(17).contains("The machine is warm"));
  EXPECT_TRUE(board(4).contains("Processor"));
  for (const std::size_t rows : {1U, 4U, 17U, 40U}) EXPECT_TRUE(board(rows).contains("PAUSED")) << rows;
}

}  // namespace
}  // namespace quorvane
