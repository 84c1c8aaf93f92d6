#include "quorvane/app/cli/Commands.h"
#include "quorvane/app/cli/RunningOperation.h"
#include "quorvane/app/cli/ServiceErrors.h"
#include "quorvane/app/cli/StoragePicture.h"
#include "quorvane/base/Json.h"

#include <algorithm>

namespace quorvane {

namespace {

/// What the history says in short.
struct HistorySummary {
  std::int64_t entryCount = 0;
  std::int64_t reclaimedBytes = 0;
  std::optional<Date> lastRunAt;
};
QV_JSON_FIELDS(HistorySummary, entryCount, reclaimedBytes, lastRunAt)

HistorySummary summaryOf(const HistoryView& history) {
  HistorySummary summary{std::ssize(history.entries), 0, std::nullopt};
  for (const CleaningHistoryEntry& entry : history.entries) {
    summary.reclaimedBytes += entry.reclaimedBytes;
    summary.lastRunAt = std::max(summary.lastRunAt, std::optional(entry.date));
  }
  return summary;
}

std::string historyLines(const HistoryView& history, const ReportStyle& style) {
  ReportText text(style);
  const HistorySummary summary = summaryOf(history);
  if (summary.lastRunAt) {
    text.line({"cli.overview.lastRun", {{"date", *summary.lastRunAt}, {"size", ByteCount{summary.reclaimedBytes}}}});
  }
  if (history.pendingCount > 0) text.line({"cli.overview.pending", {{"count", history.pendingCount}}});
  if (!text.isEmpty()) text.blank();
  text.asIs(style.catalogue.text(summary.lastRunAt ? "cli.overview.nextWithHistory" : "cli.overview.next") + "\n");
  return text.take();
}

CommandOutcome overview(const CommandContext& context, MainLoop& loop, AppModel& model) {
  const CleaningScanProgressUpdate beginning{0, "storage.status.measuring", std::nullopt};
  const auto storage = runToEnd<StorageSnapshot>(
      context.console, loop, model, beginning,
      [&](AppModel::Handlers<StorageSnapshot> handlers) { model.measureStorage(std::move(handlers)); });
  if (!storage) return failure(storage.error());

  Console& console = context.console;
  const auto history = model.history();
  if (console.wantsJson()) {
    Json json{{"storage", toJson(*storage)}};
    if (history) json["history"] = toJson(summaryOf(*history));
    if (history) json["pendingCount"] = history->pendingCount;
    console.print(printedJson(json));
  } else {
    const ReportStyle style = console.outputReport();
    console.print(storagePicture(*storage, style.catalogue, model.settings().folders.home, style.text));
    console.print(historyLines(history.value_or(HistoryView{}), style));
  }
  if (history) return ExitCode::done;
  console.tell(commandError(history.error()));
  return ExitCode::someNotDone;
}

}  // namespace

CommandOutcome runOverview(const CommandContext& context) {
  return withModel(context, [&](MainLoop& loop, AppModel& model) { return overview(context, loop, model); });
}

}  // namespace quorvane
