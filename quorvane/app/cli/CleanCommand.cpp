#include "quorvane/app/cli/RemovalCommand.h"
#include "quorvane/app/cli/RemovalRun.h"
#include "quorvane/app/cli/ReviewFile.h"
#include "quorvane/app/cli/RunningOperation.h"
#include "quorvane/app/cli/arguments/NearestWord.h"
#include "quorvane/app/cli/arguments/ScannedCategories.h"
#include "quorvane/app/cli/reports/ScanReport.h"
#include "quorvane/app/cli/review/ReviewDialogue.h"
#include "quorvane/cleaning/CleaningSelection.h"

#include <algorithm>
#include <utility>

namespace quorvane {

namespace {

// A selector is an identifier, a path, or one of these words.
CommandError matchesNothing(const SelectionError& error) {
  std::vector<std::string> words = scannedCategoryNames();
  for (const SafetyLevel level : allCases<SafetyLevel>()) words.emplace_back(caseName(level));
  CommandError told{ExitCode::wrongUsage, {"cli.error.selectorMatchesNothing", {{"given", error.selector}}}};
  const auto word = nearestWord(error.selector, words);
  if (word && *word != error.selector) told.hint = Message{"cli.hint.didYouMean", {{"word", *word}}};
  return told;
}

/// The command that moves what a scan found.
class CleanCommand {
 public:
  explicit CleanCommand(const RemovalTask& task) : task_(task), console_(task.console()), asked_(task.asked()) {}

  CommandOutcome run() {
    auto result =
        asked_.from ? reviewedResult(task_.context, task_.model) : scanToEnd(console_, task_.loop, task_.model, {});
    if (!result) return failure(result.error());
    const auto selected = applySelection(result->items, {asked_.select, asked_.unselect});
    if (!selected) return failure(matchesNothing(selected.error()));
    const bool hasNothing = std::ranges::none_of(result->items, &ScanItem::isSelected);
    if (hasNothing || task_.isSettled()) showCoverage(*result);
    if (hasNothing) return nothingSelected(result->items.empty());
    return task_.moveIfConfirmed(
        asked_.from == "-", [&] { return isReviewed(*result); },
        [&] { return move(selectedItems(std::move(result->items))); });
  }

 private:
  void showCoverage(const ScanResult& result) {
    const std::string notes = coverageReport(result, console_.errorReport());
    if (!notes.empty()) console_.show(notes);
  }

  bool isReviewed(ScanResult& result) {
    const ScanSettings& settings = task_.model.settings();
    const LocationFolders folders(settings, task_.model.fileSystem());
    return isConfirmed(console_, result, PlaceEvidence(locationTable(settings.layout), folders));
  }

  CommandOutcome nothingSelected(bool isNothingFound) {
    if (!console_.wantsJson()) {
      console_.printLine({isNothingFound ? "cli.scan.nothing" : "cli.clean.nothingSelected", {}});
      return ExitCode::done;
    }
    RemovalSummary summary;
    summary.isRehearsal = asked_.isRehearsal;
    return printSummary(console_, summary, std::nullopt);
  }

  CommandOutcome move(const std::vector<ScanItem>& items) {
    return runRemoval(console_, task_.loop, task_.model, asked_.isRehearsal, items,
                      [&](AppModel::RemovalKind kind, RemovalHandlers handlers) {
                        task_.model.clean(items, kind, std::move(handlers));
                      });
  }

  const RemovalTask task_;
  Console& console_;
  const RemovalArguments& asked_;
};

}  // namespace

CommandOutcome runClean(const CommandContext& context) { return runRemovalCommand<CleanCommand>(context); }

}  // namespace quorvane
