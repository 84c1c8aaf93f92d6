#include "quorvane/app/cli/reports/ScanReport.h"

#include "quorvane/app/cli/reports/StoragePicture.h"
#include "quorvane/app/cli/terminal/ProgressBar.h"
#include "quorvane/app/messages/TextLayout.h"
#include "tests/cli/CommandLineRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace quorvane {
namespace {

const FilePath home{"/home/ada"};

ScanItem item(std::string_view below, ScanCategory category, SafetyLevel safety, std::string reason,
              std::int64_t size) {
  ScanItem made;
  made.url = {joined(home, below)};
  made.displayName = leafOf(made.url.path);
  made.category = category;
  made.safety = safety;
  made.reasonKey = std::move(reason);
  made.size = size;
  made.isSelected = safety == SafetyLevel::safe;
  made.snapshot = FileTreeSnapshot{};
  return made;
}

ScanResult plainResult() {
  ScanResult result;
  result.items = {
      item("Downloads/system.iso", ScanCategory::installers, SafetyLevel::review, "reason.oldInstaller", 524'288'000),
      item(".cache/tiny", ScanCategory::applicationCache, SafetyLevel::safe, "reason.regenerableCache", 512),
      item(".cache/vault", ScanCategory::applicationCache, SafetyLevel::blocked, "reason.sensitiveApplicationProtected",
           93'400'000),
  };
  return result;
}

ScanResult hostileResult() {
  ScanResult result = plainResult();
  const std::string names[] = {
      "a\nb\x1b[2J\x07",
      "\xE2\x80\xAEgpj.exe",
      std::string(255, 'w'),
      "\xFF\xFE invalid",
      "\xE0\xA4\x95\xE0\xA5\x8D\xE0\xA4\xB7\xE0\xA4\xBF\xE1\x84\x92\xE1\x85\xA1\xE1\x86\xAB",
      "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\xE3\x81\xAE\xE9\x95\xB7\xE3\x81\x84\xE5\x90\x8D\xE5\x89\x8D",
      std::string(60, '\x01')};
  ScanCoverageEntry entry;
  entry.path = joined(home, ".cache");
  entry.status = ScanCoverageStatus::partial;
  entry.reason = ScanCoverageReason::permissionDenied;
  std::vector<FilePath> unreadable;
  for (const std::string& name : names) {
    result.items.push_back(
        item(".cache/" + name, ScanCategory::browserCache, SafetyLevel::review, "reason.unknownCache", 1'500'000));
    result.items.back().snapshot.reset();
    unreadable.push_back(joined(home, ".cache/" + name + "/locked"));
    unreadable.push_back(joined(home, "elsewhere/" + name));
    entry.notes.push_back({joined(home, name), "coverage.note.ignoredFiles", 2, {".env", name}});
  }
  entry.unreadablePaths = unreadable;
  ScanCoverageEntry ignored;
  ignored.path = joined(home, ".cache/" + names[0]);
  ignored.status = ScanCoverageStatus::skipped;
  ignored.reason = ScanCoverageReason::ignored;
  result.unreadablePaths = unreadable;
  ScanCoverageEntry inPart = entry;
  inPart.unreadablePaths.clear();
  result.coverage = ScanCoverageLedger{
      {entry, inPart, ignored}, {{std::nullopt, "coverage.notice.processesNotInspectable", 2, {names[0], names[1]}}}};
  return result;
}

std::string report(const ScanResult& result, const TextStyle& style) {
  return scanReport(result, MessageCatalogue::english(), home, style);
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::string withoutColours(const std::string& text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\x1b')
      i = text.find('m', i);
    else
      plain += text[i];
  }
  return plain;
}

TEST(ScanReportTests, readsWellAtEightyColumns) {
  EXPECT_EQ(report(plainResult(), {.isLaidOut = true, .columns = 80}),
            "Application caches  93.4 MB in 2 items\n"
            "      93.4 MB  vault       Blocked  Of a security or network application\n"
            "  * 512 bytes  tiny        Safe     Made again when needed\n"
            "\n"
            "Old installers  524 MB in 1 item\n"
            "       524 MB  system.iso  Review   An installer older than 30 days\n"
            "\n"
            "A wider terminal, or `quorvane scan | less`, also shows where each item lies.\n"
            "\n"
            "Found: 618 MB in 3 items\n"
            "Selected: 512 bytes in 1 item, marked *\n");
}

TEST(ScanReportTests, putsReasonsBelowWhereItIsNarrowAndShowsPathsWhereItIsWide) {
  const std::string narrow = report(plainResult(), {.isLaidOut = true, .columns = 50});
  EXPECT_NE(narrow.find("  vault       Blocked\n"
                        "               Of a security or network\n"
                        "               application\n"),
            std::string::npos)
      << narrow;
  const std::string wide = report(plainResult(), {.isLaidOut = true, .columns = 120});
  EXPECT_NE(wide.find("  ~/.cache/vault\n"), std::string::npos) << wide;
  EXPECT_EQ(wide.find("wider terminal"), std::string::npos) << wide;
}

TEST(ScanReportTests, fitsAnyTerminalWhateverTheNames) {
  const ScanResult result = hostileResult();
  for (const std::size_t columns : {20U, 24U, 32U, 40U, 50U, 60U, 80U, 100U, 120U, 200U}) {
    for (const CharacterSet characters : {CharacterSet::unicode, CharacterSet::ascii}) {
      const TextStyle plain{.isLaidOut = true, .characters = characters, .columns = columns};
      TextStyle coloured = plain;
      coloured.hasColours = true;
      const std::string text = report(result, plain);
      for (const std::string& line : linesOf(text)) {
        EXPECT_LE(displayWidth(line), columns) << line;
        EXPECT_EQ(harmlessText(line, characters), line);
      }
      EXPECT_EQ(withoutColours(report(result, coloured)), text) << "colours change nothing but colours";
    }
  }
}

TEST(ScanReportTests, isPlainWhereItIsNotForTheEye) {
  EXPECT_EQ(report(plainResult(), {.characters = CharacterSet::unicode, .columns = 20}),
            "Application caches: 93.4 MB in 2 items\n"
            "93.4 MB\tBlocked\tnot selected\tvault\tOf a security or network application\t~/.cache/vault\n"
            "512 bytes\tSafe\tselected\ttiny\tMade again when needed\t~/.cache/tiny\n"
            "\n"
            "Old installers: 524 MB in 1 item\n"
            "524 MB\tReview\tnot selected\tsystem.iso\tAn installer older than 30 days\t~/Downloads/system.iso\n"
            "\n"
            "Found: 618 MB in 3 items\n"
            "Selected: 512 bytes in 1 item\n");
  int items = 0;
  for (const std::string& line : linesOf(report(hostileResult(), {.characters = CharacterSet::unicode}))) {
    const auto tabs = std::ranges::count(line, '\t');
    EXPECT_TRUE(tabs == 0 || tabs == 5) << line;
    items += tabs == 5 ? 1 : 0;
  }
  EXPECT_EQ(items, std::ssize(hostileResult().items)) << "one line each, whatever the names";
}

TEST(ScanReportTests, saysWhatWasNotSeen) {
  const std::string text = report(hostileResult(), {.characters = CharacterSet::unicode});
  for (const char* part :
       {"at least 1.5 MB\t", "14 places could not be read:", "and 9 more places", "Found: at least ",
        "left out: ~/.cache/a\\nb\\x1b[2J\\x07: you chose to ignore it",
        "holds 2 files that git ignores and that may matter: .env, ", "2 running programs could not be looked into"})
    EXPECT_NE(text.find(part), std::string::npos) << part << "\n" << text;
  EXPECT_EQ(text.find("left out: ~/.cache:"), std::string::npos) << "a location that was read in part";
  EXPECT_NE(text.find(std::string(255, 'w')), std::string::npos) << "plain, nothing is shortened";
  EXPECT_EQ(report({}, {}), "Nothing that could be cleaned was found.\n");
}

TEST(ScanReportTests, saysWhichSumsAreLowerBounds) {
  ScanResult result = plainResult();
  ScanItem mounted = result.items.front();
  mounted.snapshot.reset();
  result.items = {item("a", ScanCategory::logs, SafetyLevel::safe, "reason.cacheTag", 9'000), mounted};
  EXPECT_EQ(report(result, {.isLaidOut = true, .columns = 80}),
            "Logs  9 kB in 1 item\n"
            "  *      9 kB  a           Safe    Marked as a cache by its program\n"
            "\n"
            "Old installers  at least 524 MB in 1 item\n"
            "    >= 524 MB  system.iso  Review  An installer older than 30 days\n"
            "\n"
            "A wider terminal, or `quorvane scan | less`, also shows where each item lies.\n"
            "\n"
            "Sizes marked >= are lower bounds: those items could not be read as a whole.\n"
            "Found: at least 524 MB in 2 items\n"
            "Selected: 9 kB in 1 item, marked *\n");
  result.items = {mounted};
  EXPECT_TRUE(report(result, {}).ends_with("Selected: nothing\n"));
}

TEST(ScanReportTests, tellsItemsOfOneNameApart) {
  ScanResult result = plainResult();
  result.items.push_back(item(".npm/tiny", ScanCategory::applicationCache, SafetyLevel::safe, "reason.cacheTag", 9));
  const std::string text = report(result, {.isLaidOut = true, .columns = 80});
  EXPECT_NE(text.find("~/.npm/tiny"), std::string::npos) << text;
}

TEST(ProgressLineTests, fitsExactly) {
  const auto catalogue = MessageCatalogue::english();
  const std::string place = "/home/ada/\xE6\x97\xA5\x1b[2J/" + std::string(200, 'x');
  for (const double progress : {0.0, 0.427, 1.0}) {
    for (std::size_t columns = 20; columns < 160; ++columns) {
      const TextStyle style{
          .isLaidOut = true, .canRedraw = true, .characters = CharacterSet::unicode, .columns = columns};
      const std::string line = progressLine({progress, "scan.status.logs", ScanActivitySnapshot{place, 24'310}},
                                            catalogue, {home, CharacterSet::unicode}, style);
      EXPECT_LE(displayWidth(line), columns) << line;
      EXPECT_FALSE(line.contains("100%")) << "the end is told by the result";
      EXPECT_EQ(harmlessText(line), line);
      if (columns > 80) {
        EXPECT_GE(displayWidth(line), columns - 1) << "the place takes the room that is left";
      }
      EXPECT_EQ(line.contains('%'), progress > 0) << "a progress of 0 is one that nobody knows";
    }
  }
}

TEST(ProgressBarTests, neverGoesBack) {
  PreparedInput input({});
  KeepingChannel output({}), errors({.isTerminal = true, .columns = 80});
  const EnvironmentVariables variables{{"TERM", "xterm"}};
  Console console({input, output, errors}, variables, parseArguments({"scan"}));
  {
    ProgressBar bar(console);
    for (const double progress : {0.0, 0.4, 0.2, 0.0, 0.41, 1.0})
      bar.show({progress, "scan.status.logs", std::nullopt});
  }
  std::vector<std::string> percents;
  for (std::size_t at = 0; (at = errors.text.find('%', at)) != std::string::npos; ++at)
    percents.push_back(errors.text.substr(at - 3, 3));
  EXPECT_EQ(percents, (std::vector<std::string>{" 40", " 40", " 40", " 41", " 99"}));
  EXPECT_TRUE(errors.text.ends_with("\r\x1b[K"));
}

TEST(StoragePictureTests, hasABarOfOneLengthWhateverItShows) {
  const auto catalogue = MessageCatalogue::english();
  for (const StorageSnapshot& storage :
       {StorageSnapshot{}, StorageSnapshot{1000, 400, 100, 200, true}, StorageSnapshot{1000, 1000, 0, 0, false},
        StorageSnapshot{1000, 100, 5000, 5000, false}, StorageSnapshot{INT64_MAX, 1, INT64_MAX, INT64_MAX, false}}) {
    for (const std::size_t columns : {32U, 60U}) {
      const auto lines =
          linesOf(storagePicture(storage, home, {catalogue, home, {.isLaidOut = true, .columns = columns}}));
      const auto bar = std::ranges::find(lines, "");
      ASSERT_TRUE(bar != lines.end() && bar + 1 != lines.end());
      EXPECT_TRUE(bar[1] == "  " || displayWidth(bar[1]) == columns - 2) << bar[1];
      for (const std::string& line : lines) EXPECT_LE(displayWidth(line), columns) << line;
    }
  }
  EXPECT_EQ(storagePicture({1000, 400, 100, 200, false}, home, {catalogue, home, {}}),
            "The disk of /home/ada: 400 bytes of 1 kB free\n"
            "Applications: 100 bytes\n"
            "Your files: 200 bytes\n"
            "Everything else: 300 bytes\n"
            "Free: 400 bytes\n"
            "\n"
            "Everything else holds what the system keeps in reserve, too.\n"
            "\n");
}

}  // namespace
}  // namespace quorvane
