#include "quorvane/cleaning/CleaningSelection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

namespace quorvane {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

const std::string identifier = "6F9619FF-8B86-4011-B42D-00C04FC964FF";

ScanItem item(const std::string& path, ScanCategory category, SafetyLevel safety, bool isSelected) {
  ScanItem made;
  made.url = {{path}};
  made.category = category;
  made.safety = safety;
  made.isSelected = isSelected;
  return made;
}

std::vector<ScanItem> reviewed() {
  std::vector<ScanItem> items{
      item("/c/a", ScanCategory::applicationCache, SafetyLevel::safe, true),
      item("/c/ab", ScanCategory::browserCache, SafetyLevel::review, false),
      item("/c/a/x", ScanCategory::applicationCache, SafetyLevel::blocked, false),
      item("/l/b", ScanCategory::logs, SafetyLevel::safe, true),
      item("/l/c", ScanCategory::logs, SafetyLevel::review, false),
      item("/d", ScanCategory::deviceBackup, SafetyLevel::blocked, false),
  };
  items[4].id = *uuidFromText(identifier);
  return items;
}

/// The paths of what is selected then, or the selector that is refused.
std::vector<std::string> selected(const SelectionRequest& request) {
  std::vector<ScanItem> items = reviewed();
  if (const auto applied = applySelection(items, request); !applied) return {"refused: " + applied.error().selector};
  std::vector<std::string> paths;
  for (const ScanItem& each : selectedItems(items)) paths.push_back(each.url.path.bytes);
  return paths;
}

TEST(CleaningSelectionTests, marksWhatIsNamed) {
  using Paths = std::vector<std::string>;
  const struct {
    SelectionRequest request;
    Paths expected;
  } cases[] = {
      {{{}, {}}, {"/c/a", "/l/b"}},
      {{{"logs"}, {}}, {"/l/b", "/l/c"}},
      {{{"safe", "browserCache"}, {}}, {"/c/a", "/c/ab", "/l/b"}},
      {{{"applicationCache"}, {}}, {"/c/a"}},
      {{{"/c/a"}, {}}, {"/c/a", "/c/a/x"}},
      {{{"/c/"}, {}}, {"/c/a", "/c/ab", "/c/a/x"}},
      {{{"/"}, {"/c"}}, {"/l/b", "/l/c", "/d"}},
      {{{"/d"}, {}}, {"/d"}},
      {{{identifier}, {}}, {"/l/c"}},
      {{{"6f9619ff-8b86-4011-b42d-00c04fc964ff"}, {}}, {"/l/c"}},
      {{{}, {"logs"}}, {"/c/a"}},
      {{{}, {"deviceBackup"}}, {"/c/a", "/l/b"}},
      {{{"logs"}, {"safe"}}, {"/l/c"}},
      {{{"logs", "nonsense"}, {}}, {"refused: nonsense"}},
      {{{"Logs"}, {}}, {"refused: Logs"}},
      {{{""}, {}}, {"refused: "}},
      {{{"c/a"}, {}}, {"refused: c/a"}},
      {{{"/c/abc"}, {}}, {"refused: /c/abc"}},
      {{{"installers"}, {}}, {"refused: installers"}},
      {{{"deviceBackup"}, {}}, {"refused: deviceBackup"}},
      {{{"blocked"}, {}}, {"refused: blocked"}},
      {{{}, {"installers"}}, {"refused: installers"}},
      {{{"00000000-0000-4000-8000-000000000009"}, {}}, {"refused: 00000000-0000-4000-8000-000000000009"}},
  };
  for (const auto& each : cases)
    EXPECT_EQ(selected(each.request), each.expected)
        << testing::PrintToString(each.request.select) << testing::PrintToString(each.request.unselect);
}

TEST(CleaningSelectionTests, aRefusedSelectionChangesNothing) {
  std::vector<ScanItem> items = reviewed();
  EXPECT_FALSE(applySelection(items, {{"logs"}, {"nonsense"}}));
  EXPECT_EQ(items, reviewed());
}

TEST(CleaningSelectionTests, aReviewIsStaleAfterADay) {
  const Date finishedAt = dateFromTimestamp(1'800'000'000, 0);
  const ScanResult result{
      .startedAt = finishedAt, .finishedAt = finishedAt, .items = {}, .unreadablePaths = {}, .coverage = {}};
  EXPECT_FALSE(staleSelection(result, finishedAt));
  EXPECT_FALSE(staleSelection(result, finishedAt + 24h));
  EXPECT_EQ(staleSelection(result, finishedAt + 24h + 1ns), StaleScanSelection{finishedAt});
  EXPECT_TRUE(staleSelection(result, finishedAt - 1s)) << "the clock was set back";
}

}  // namespace
}  // namespace quorvane
