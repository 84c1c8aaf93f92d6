#include "quorvane/app/cli/Commands.h"
#include "quorvane/app/cli/RunningOperation.h"
#include "quorvane/app/cli/ServiceErrors.h"
#include "quorvane/app/cli/reports/HistoryNames.h"
#include "quorvane/app/cli/reports/RestoreReport.h"

#include <algorithm>
#include <utility>

namespace quorvane {

namespace {

using References = std::vector<RecoveryReference>;

void addOnce(References& references, const RecoveryReference& added) {
  if (std::ranges::find(references, added) == references.end()) references.push_back(added);
}

// What one identifier stands for: the item, or what is in the Trash of an entry. Of an entry with nothing there all
// items are named, for each to be refused with its reason.
References referencesOf(const CleaningHistoryEntry& entry, const Uuid& id) {
  if (id != entry.id) return {{entry.id, id}};
  References references = inTrash({&entry});
  if (references.empty())
    for (const CleaningHistoryItem& item : entry.items) references.push_back({entry.id, item.id});
  return references;
}

Outcome<References, CommandError> namedReferences(const std::vector<CleaningHistoryEntry>& entries,
                                                  const std::vector<std::string>& given) {
  const HistoryNames names(entries);
  References references;
  for (const std::string& each : given) {
    const auto named = names.find(each);
    if (!named) return failure(named.error());
    for (const RecoveryReference& reference : referencesOf(*named->entry, named->id)) addOnce(references, reference);
  }
  return references;
}

References everythingInTrash(const std::vector<CleaningHistoryEntry>& entries) {
  std::vector<const CleaningHistoryEntry*> all;
  all.reserve(entries.size());
  for (const CleaningHistoryEntry& entry : entries) all.push_back(&entry);
  return inTrash(all);
}

Outcome<References, CommandError> chosen(const Invocation& asked, const std::vector<CleaningHistoryEntry>& entries) {
  References references;
  switch (asked.restore.choice) {
    case RestoreChoice::named: return namedReferences(entries, asked.subjects);
    case RestoreChoice::lastRun:
      if (const auto run = lastRunForGood(entries))
        return failure(CommandError{ExitCode::refused, {"cli.error.lastRunIrreversible", {{"date", run->date}}}});
      references = lastRunInTrash(entries);
      break;
    case RestoreChoice::everything: references = everythingInTrash(entries); break;
  }
  if (references.empty()) return failure(CommandError{ExitCode::wrongUsage, {"cli.error.nothingToPutBack", {}}});
  return references;
}

CommandOutcome restore(const CommandContext& context, MainLoop& loop, AppModel& model) {
  Console& console = context.console;
  const auto history = model.history();
  if (!history) return failure(commandError(history.error()));
  const auto references = chosen(context.invocation, history->entries);
  if (!references) return failure(references.error());

  const CleaningScanProgressUpdate beginning{0, "restore.status.restoring", std::nullopt};
  using Handlers = AppModel::Handlers<RestoreReport, RecoveryStoreError>;
  const auto [outcome, cancelled] =
      runOperation<RestoreReport, RecoveryStoreError>(console, loop, model, beginning, [&](Handlers handlers) {
        model.restore(*references, context.invocation.restore.onConflict, std::move(handlers));
      });
  if (!outcome) return failure(commandError(outcome.error()));
  const RecoveryBatchResult& result = outcome->result;
  const RestoreSummary summary = restoreSummary(history->entries, *references, result);
  console.print(console.wantsJson() ? jsonText(result) : restoreReport(summary, console.outputReport()));
  for (const RestoreSummary::Failed& failed : summary.failed) console.tellItem(failed.path, failed.reason);
  if (outcome->interruption) {
    console.tell(commandError(*outcome->interruption));
    return ExitCode::someNotDone;
  }
  const auto attempted = result.restoredCount + result.failedCount;
  if (cancelled && attempted < std::ssize(*references)) {
    const char* key = result.restoredCount > 0 ? "cli.restore.stopped" : "cli.restore.stoppedBefore";
    console.tell({*cancelled, {key, {{"count", result.restoredCount}}}});
    return *cancelled;
  }
  return result.failedCount == 0 ? ExitCode::done : ExitCode::someNotDone;
}

}  // namespace

CommandOutcome runRestore(const CommandContext& context) {
  return withModel(context, [&](MainLoop& loop, AppModel& model) { return restore(context, loop, model); });
}

}  // namespace quorvane
