// What is said of removals and restores, whatever the names and the width of the terminal.
#include "quorvane/app/cli/reports/HistoryReport.h"
#include "quorvane/app/cli/reports/RemovalSummary.h"
#include "quorvane/app/cli/reports/RestoreReport.h"
#include "quorvane/app/cli/review/ReviewAnswer.h"
#include "quorvane/app/messages/TextLayout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace quorvane {
namespace {

using testing::HasSubstr;
using testing::Not;

const FilePath home{"/home/ada"};
const std::string hostileName = "\x1b[2J\n\xE2\x80\xAE\xE6\x97\xA5\xFF" + std::string(200, 'w');

CleaningHistoryItem item(std::uint8_t number, const std::string& name) {
  CleaningHistoryItem made;
  made.id.bytes[15] = number;
  made.name = name;
  made.originalPath = joined(home, ".cache/" + name);
  made.trashedPath = joined(home, ".local/share/Trash/files/" + name);
  made.trashIdentity = FileIdentity{};
  made.size = 123'456'789;
  made.outcome = CleaningHistoryItemOutcome::movedToTrash;
  return made;
}

CleaningHistoryItem failed(std::uint8_t number, const std::string& name) {
  CleaningHistoryItem made = item(number, name);
  made.outcome = CleaningHistoryItemOutcome::failed;
  made.trashedPath.reset();
  made.trashIdentity.reset();
  made.failureReason = "It has changed.\x1b[2J";
  made.failureCategory = CleanupFailureCategory::changedAfterScan;
  return made;
}

CleaningHistoryEntry entry(const CleaningHistoryItem& only, int second) {
  CleaningHistoryEntry made;
  made.id = only.id;
  made.date = dateFromTimestamp(1'795'237'443 + second, 0);
  made.items = {only};
  return made;
}

HistoryView hostileHistory() {
  HistoryView history;
  CleaningHistoryItem back = item(2, hostileName), beside = item(3, "b"), stuck = item(4, "c"),
                      pending = failed(6, "p");
  back.restoredAt = beside.restoredAt = Date();
  back.restoredPath = back.originalPath;
  beside.restoredPath = joined(home, ".cache/b (restored " + hostileName);
  stuck.restoreFailure = RecoveryFailure::parentMissing;
  pending.pendingCleanup = CleanupMoveIntent{};
  for (const auto& each : {item(1, "a"), back, beside}) history.entries.push_back(entry(each, 9));
  for (const auto& each : {stuck, failed(5, hostileName), pending}) history.entries.push_back(entry(each, 3));
  history.pendingCount = 1;
  return history;
}

RemovalSummary hostileSummary() {
  RemovalSummary summary;
  for (std::uint8_t i = 1; i < 4; ++i) summary.entries.push_back(entry(item(i, hostileName), 0));
  for (const CleanupFailureCategory category : allCases<CleanupFailureCategory>())
    for (int i = 0; i < 5; ++i)
      summary.failures.push_back({{}, joined(home, hostileName), hostileName, {"cleanup.failure.missing", category}});
  summary.movedCount = 3;
  summary.movedBytes = 370'370'367;
  summary.availableBytesDelta = INT64_MIN;
  return summary;
}

RestoreSummary hostileRestore() {
  RestoreSummary summary;
  summary.restored = {{joined(home, "a"), joined(home, "a")}, {joined(home, "b"), joined(home, hostileName)}};
  for (const RecoveryFailure failure : allCases<RecoveryFailure>())
    summary.failed.push_back({joined(home, hostileName + "/x"), failure, {messageKey(failure), {}}});
  summary.remainingCount = 7;
  return summary;
}

TEST(RemovalReportTests, fitAnyTerminalWhateverTheNames) {
  const auto catalogue = MessageCatalogue::english();
  const HistoryView history = hostileHistory();
  for (const std::size_t columns : {20U, 30U, 40U, 60U, 80U, 100U, 140U, 200U}) {
    for (const CharacterSet characters : {CharacterSet::unicode, CharacterSet::ascii}) {
      const ReportStyle style{catalogue, home, {.isLaidOut = true, .characters = characters, .columns = columns}};
      std::istringstream lines(historyReport(history, std::nullopt, style) +
                               entryReport(history.entries[2], false, style) +
                               removalReport(hostileSummary(), style, true) +
                               removalReport(hostileSummary(), style, false) + restoreReport(hostileRestore(), style));
      for (std::string line; std::getline(lines, line);) {
        EXPECT_LE(displayWidth(line), columns) << line;
        EXPECT_EQ(harmlessText(line, characters), line);
      }
    }
  }
}

TEST(RemovalReportTests, tellTheStateOfEveryItem) {
  const auto catalogue = MessageCatalogue::english();
  const ReportStyle style{catalogue, home, {.characters = CharacterSet::unicode}};
  HistoryView history = hostileHistory();
  const std::string settled = historyReport(history, std::nullopt, style);
  for (const char* part :
       {"moved 3 items, 370 MB; 2 put back\n", "moved 1 item, 123 MB; 1 not moved; 1 unsettled\n", "\tin the Trash\t",
        "put back to ~/.cache/b (restored ", "in the Trash; not put back: The folder",
        "not moved: It has changed.\\x1b[2J", "1 item was left unsettled by a run that was interrupted.",
        "00000000-0000-0000-0000-000000000006\tinterrupted\t"})
    EXPECT_THAT(settled, HasSubstr(part));
  history.isInFlight = true;
  EXPECT_THAT(historyReport(history, 1, style), HasSubstr("1 item is being moved or put back by another run"));
  EXPECT_THAT(historyReport(history, 1, style), HasSubstr("and 1 older run"));
}

TEST(RemovalReportTests, groupFailuresAndGiveHints) {
  const auto catalogue = MessageCatalogue::english();
  const std::string text = removalReport(hostileSummary(), {catalogue, home, {}}, true);
  for (const char* part :
       {"30 items were not moved:\n", "\nChanged since the review, 5: ", "\nIn use, 5: ",
        "once the program that uses it is closed", "`ls -ld` shows whose it is",
        "What was not moved was left as it is.", "`gio trash --empty`", "less available on the disk"})
    EXPECT_THAT(text, HasSubstr(part));
  RemovalSummary onlyMissing;
  onlyMissing.failures = {{{}, home, "gone", {"cleanup.failure.missing", CleanupFailureCategory::missing}}};
  EXPECT_THAT(removalReport(onlyMissing, {catalogue, home, {}}, true), Not(HasSubstr("was left as it is")));
}

TEST(RemovalReportTests, sayWhatStillTakesItsSpace) {
  const auto catalogue = MessageCatalogue::english();
  RemovalSummary summary;
  summary.movedCount = 1;
  EXPECT_THAT(removalReport(summary, {catalogue, home, {}}, true), Not(HasSubstr("In the Trash")));
  summary.movedBytes = 4096;
  EXPECT_THAT(removalReport(summary, {catalogue, home, {}}, true), HasSubstr("In the Trash it still takes its space"));
  summary.movedCount = 2;
  EXPECT_THAT(removalReport(summary, {catalogue, home, {}}, true), HasSubstr("they still take their space"));
}

TEST(RemovalReportTests, doNotSayThatSomethingGoneIsInTheTrash) {
  CleaningHistoryItem gone = item(1, "a");
  gone.restoreFailure = RecoveryFailure::missing;
  EXPECT_EQ(MessageCatalogue::english().text(stateOf(gone, false)), "no longer in the Trash");
}

TEST(HistoryRunsTests, takeTheNewestRunThatHasSomethingInTheTrash) {
  const HistoryView history = hostileHistory();
  EXPECT_EQ(historyRuns(history.entries).size(), 2U);
  const Uuid first = history.entries[0].id;
  EXPECT_EQ(lastRunInTrash(history.entries), (std::vector<RecoveryReference>{{first, first}}));
  std::vector<CleaningHistoryEntry> older(history.entries.begin() + 1, history.entries.end());
  EXPECT_EQ(lastRunInTrash(older).at(0).itemID, history.entries[3].id) << "the newest run is put back already";
  EXPECT_TRUE(lastRunInTrash({}).empty());
}

TEST(ReviewAnswerTests, areReadFromOneLine) {
  using namespace reviewAnswer;
  const std::pair<const char*, ReviewAnswer> cases[] = {
      {"y", Yes{}},
      {" YES ", Yes{}},
      {"", No{}},
      {"  ", No{}},
      {"q", No{}},
      {"e", ShowAll{}},
      {"?", Help{}},
      {"?0", Help{}},
      {"? 12", Look{12}},
      {"?12", Look{12}},
      {"7", Change{{Numbers{7, 7}}}},
      {"9-5,2 logs", Change{{Numbers{5, 9}, Numbers{2, 2}, Word{"logs"}}}},
      {"5-", Help{}},
      {"-5", Help{}},
      {"1-99999999999999999999999", Help{}},
      {"y 3", Change{{Word{"y"}, Numbers{3, 3}}}},
  };
  for (const auto& [line, answer] : cases) EXPECT_EQ(reviewAnswerFrom(line), answer) << line;
}

}  // namespace
}  // namespace quorvane
