#include "quorvane/app/cli/Commands.h"
#include "quorvane/app/cli/Confirmation.h"
#include "quorvane/app/cli/RemovalRun.h"
#include "quorvane/app/cli/ReviewDialogue.h"
#include "quorvane/app/cli/ReviewFile.h"
#include "quorvane/app/cli/RunningOperation.h"
#include "quorvane/app/cli/ScanReport.h"
#include "quorvane/cleaning/CleaningSelection.h"

namespace quorvane {

namespace {

CommandError matchesNothing(const SelectionError& error) {
  return {ExitCode::wrongUsage, {"cli.error.selectorMatchesNothing", {{"given", error.selector}}}};
}

/// The command that moves what a scan found.
class CleanCommand {
 public:
  CleanCommand(const CommandContext& context, MainLoop& loop, AppModel& model)
      : context_(context), console_(context.console), asked_(context.invocation.removal), loop_(loop), model_(model) {}

  CommandOutcome run() {
    auto result = asked_.from ? reviewedResult(context_, model_) : scanToEnd(console_, loop_, model_, {});
    if (!result) return failure(result.error());
    const auto selected = applySelection(result->items, {asked_.select, asked_.unselect});
    if (!selected) return failure(matchesNothing(selected.error()));
    const bool hasNothing = selectedItems(result->items).empty();
    if (hasNothing || isSettled()) showCoverage(*result);
    if (hasNothing) return nothingSelected(result->items.empty());
    const auto confirmed = isAllowed(*result);
    if (!confirmed) return failure(confirmed.error());
    if (!*confirmed) return declined(console_);
    return move(selectedItems(result->items));
  }

 private:
  /// Nobody is to be asked.
  bool isSettled() const { return asked_.isRehearsal || asked_.isConfirmed; }

  void showCoverage(const ScanResult& result) {
    const std::string notes = coverageReport(result, console_.errorReport());
    if (!notes.empty()) console_.show(notes);
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

  Outcome<bool, CommandError> isAllowed(ScanResult& result) {
    if (isSettled()) return true;
    if (auto refusal = whyNotToAsk(console_, asked_.from == "-")) return failure(*std::move(refusal));
    return isConfirmed(console_, result);
  }

  CommandOutcome move(const std::vector<ScanItem>& items) {
    return runRemoval(
        console_, loop_, model_, asked_.isRehearsal, items,
        [&](AppModel::RemovalKind kind, RemovalHandlers handlers) { model_.clean(items, kind, std::move(handlers)); });
  }

  const CommandContext& context_;
  Console& console_;
  const RemovalArguments& asked_;
  MainLoop& loop_;
  AppModel& model_;
};

}  // namespace

CommandOutcome runClean(const CommandContext& context) {
  return withModel(context, [&](MainLoop& loop, AppModel& model) { return CleanCommand(context, loop, model).run(); });
}

}  // namespace quorvane
