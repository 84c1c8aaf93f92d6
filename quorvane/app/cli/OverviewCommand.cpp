#include "quorvane/app/cli/Commands.h"
#include "quorvane/app/cli/RunningOperation.h"
#include "quorvane/app/cli/ServiceErrors.h"
#include "quorvane/app/cli/reports/HistoryRuns.h"
#include "quorvane/app/cli/reports/StatusWords.h"
#include "quorvane/app/cli/reports/StoragePicture.h"
#include "quorvane/app/model/StatusModel.h"
#include "quorvane/base/Json.h"
#include "quorvane/health/HealthScore.h"

#include <algorithm>
#include <array>
#include <span>

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

/// What people are told beyond that.
struct HistoryOutlook {
  std::int64_t movedBytes = 0;
  std::int64_t restoredBytes = 0;  ///< of those
  std::int64_t inTrashBytes = 0;   ///< of those
  std::optional<Date> lastMovedAt;
  std::int64_t interruptedCount = 0;  ///< items of the last run
  bool hasSomethingInTrash = false;
};

void addUp(std::int64_t& sum, std::int64_t size) { sum += std::min(std::max<std::int64_t>(0, size), INT64_MAX - sum); }

void addMoved(HistoryOutlook& outlook, const CleaningHistoryItem& item, Date date) {
  if (item.outcome != CleaningHistoryItemOutcome::movedToTrash) return;
  addUp(outlook.movedBytes, item.size);
  if (item.restoredAt) addUp(outlook.restoredBytes, item.size);
  if (isInTrash(item)) addUp(outlook.inTrashBytes, item.size);
  outlook.lastMovedAt = std::max(outlook.lastMovedAt, std::optional(date));
}

// The record keeps why something was not moved as the text that people were told.
bool wasInterrupted(const CleaningHistoryItem& item, const MessageCatalogue& catalogue) {
  return item.outcome == CleaningHistoryItemOutcome::failed && !isPending(item) &&
         item.failureReason == catalogue.text("cleanup.journal.interrupted");
}

HistoryOutlook outlookOf(const HistoryView& history, const MessageCatalogue& catalogue) {
  HistoryOutlook outlook;
  for (const CleaningHistoryEntry& entry : history.entries)
    for (const CleaningHistoryItem& item : entry.items) addMoved(outlook, item, entry.date);
  const std::vector<HistoryRun> runs = historyRuns(history.entries);
  if (!runs.empty())
    for (const CleaningHistoryEntry* entry : runs.front().entries)
      outlook.interruptedCount += std::ranges::count_if(
          entry->items, [&](const CleaningHistoryItem& item) { return wasInterrupted(item, catalogue); });
  outlook.hasSomethingInTrash = !lastRunInTrash(history.entries).empty() && !lastRunForGood(history.entries);
  return outlook;
}

void writeHistory(ReportText& text, const HistoryView& history, const HistoryOutlook& outlook) {
  const std::size_t before = text.size();
  if (outlook.lastMovedAt)
    text.line({outlook.restoredBytes > 0 ? "cli.overview.lastRunRestored" : "cli.overview.lastRun",
               {{"date", *outlook.lastMovedAt},
                {"size", ByteCount{outlook.movedBytes}},
                {"restored", ByteCount{outlook.restoredBytes}}}});
  if (outlook.inTrashBytes > 0) text.line({"cli.overview.inTrash", {{"size", ByteCount{outlook.inTrashBytes}}}});
  if (history.pendingCount > 0) text.line({"cli.overview.pending", {{"count", history.pendingCount}}});
  if (outlook.interruptedCount > 0) text.line({"cli.overview.interrupted", {{"count", outlook.interruptedCount}}});
  if (text.size() > before) text.blank();
}

void writeWhatNow(ReportText& text, bool hasSomethingInTrash) {
  struct Next {
    std::string_view command, key;
  };
  constexpr std::array all{
      Next{"quorvane scan", "cli.overview.next.scan"}, Next{"quorvane clean", "cli.overview.next.clean"},
      Next{"quorvane status", "cli.overview.next.status"}, Next{"quorvane undo", "cli.overview.next.undo"}};
  for (const auto& [command, key] : std::span(all).first(all.size() - (hasSomethingInTrash ? 0 : 1)))
    text.row(std::string(command), text.say({std::string(key), {}}), all[2].command.size());
}

std::string historyLines(const HistoryView& history, const ReportStyle& style) {
  ReportText text(style);
  const HistoryOutlook outlook = outlookOf(history, style.catalogue);
  writeHistory(text, history, outlook);
  writeWhatNow(text, outlook.hasSomethingInTrash);
  return text.take();
}

std::string healthLine(const HealthScore& health, const ReportStyle& style) {
  ReportText text(style);
  text.line({"cli.overview.health", {{"score", StatusWords(style).score(health)}}});
  text.blank();
  return text.take();
}

CommandOutcome overview(const CommandContext& context, MainLoop& loop, AppModel& model) {
  // Before the disk is measured, which keeps all processors busy.
  const HealthScore health = healthScore(measuredStatus(loop, {.withProcesses = false}));
  const CleaningScanProgressUpdate beginning{0, "storage.status.measuring", std::nullopt};
  const auto storage = runToEnd<StorageSnapshot>(
      context.console, loop, model, beginning,
      [&](AppModel::Handlers<StorageSnapshot> handlers) { model.measureStorage(std::move(handlers)); });
  if (!storage) return failure(storage.error());

  Console& console = context.console;
  const auto history = model.history();
  if (console.wantsJson()) {
    Json json{{"storage", toJson(*storage)}, {"healthScore", health.score}, {"healthLevel", toJson(health.level)}};
    if (history) json["history"] = toJson(summaryOf(*history));
    if (history) json["pendingCount"] = history->pendingCount;
    if (!history) {
      const CommandError error = commandError(history.error());
      json["error"] = Json{{"key", error.message.key}, {"message", console.documentText(error)}};
    }
    console.print(printedJson(json));
  } else {
    const ReportStyle style = console.outputReport();
    console.print(storagePicture(*storage, model.settings().folders.home, style));
    console.print(healthLine(health, style));
    HistoryView view = history.value_or(HistoryView{});
    markWhatIsGone(view, model.fileSystem());
    console.print(historyLines(view, style));
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
