#include "quorvane/app/cli/reports/HistoryReport.h"

#include "quorvane/app/cli/reports/HistoryNames.h"
#include "quorvane/app/cli/terminal/DetailLines.h"
#include "quorvane/app/messages/TextLayout.h"

#include <algorithm>

namespace quorvane {

namespace {

constexpr std::size_t gap = 2, widestState = 40, leastPath = 24;

/// What a run came to.
struct RunSum {
  std::int64_t moved = 0, bytes = 0, restored = 0, failed = 0, pending = 0;

  explicit RunSum(const HistoryRun& run) {
    for (const CleaningHistoryEntry* entry : run.entries)
      for (const CleaningHistoryItem& item : entry->items) add(item);
  }

  void add(const CleaningHistoryItem& item) {
    if (isPending(item)) {
      ++pending;
    } else if (item.outcome == CleaningHistoryItemOutcome::failed) {
      ++failed;
    } else {
      const bool isEmptyPrune = item.dockerOperation && item.size == 0;
      if (!isEmptyPrune) ++moved;
      bytes += item.size;
    }
    if (item.restoredAt) ++restored;
  }
};

class HistoryWriter {
 public:
  HistoryWriter(const HistoryView& history, const ReportStyle& style)
      : history_(history),
        style_(style),
        identifierColumns_(HistoryNames(history.entries).distinctLength()),
        text_(style) {}

  std::string text(std::optional<std::int64_t> limit) {
    const std::vector<HistoryRun> runs = historyRuns(history_.entries);
    if (runs.empty()) text_.line({"cli.history.none", {}});
    if (history_.pendingCount > 0) writePending();
    const auto count = std::min(std::ssize(runs), limit.value_or(std::ssize(runs)));
    for (const HistoryRun& run : std::span(runs).first(static_cast<std::size_t>(count))) writeRun(run);
    if (count < std::ssize(runs)) text_.line({"cli.history.more", {{"count", std::ssize(runs) - count}}});
    return text_.take();
  }

 private:
  void writePending() {
    text_.line(
        {history_.isInFlight ? "cli.history.inFlight" : "cli.history.interrupted", {{"count", history_.pendingCount}}});
    text_.blank();
  }

  void writeRun(const HistoryRun& run) {
    const RunSum sum(run);
    const bool isDocker = run.source == CleaningHistorySource::docker;
    std::string heading = text_.say({isDocker ? "cli.history.run.docker" : "cli.history.run",
                                     {{"date", run.date}, {"count", sum.moved}, {"size", ByteCount{sum.bytes}}}});
    for (const auto& [key, count] :
         {std::pair("cli.history.run.restored", sum.restored),
          std::pair(isDocker ? "cli.history.run.notRemoved" : "cli.history.run.failed", sum.failed),
          std::pair("cli.history.run.pending", sum.pending)})
      if (count > 0) heading += text_.say({key, {{"count", count}}});
    text_.heading(heading);
    std::size_t stateWidth = 0;
    for (const CleaningHistoryEntry* entry : run.entries)
      for (const CleaningHistoryItem& item : entry->items)
        stateWidth = std::max(stateWidth, displayWidth(stateText(item)));
    for (const CleaningHistoryEntry* entry : run.entries)
      for (const CleaningHistoryItem& item : entry->items) writeItem(item, std::min(stateWidth, widestState));
    text_.blank();
  }

  std::string stateText(const CleaningHistoryItem& item) const { return text_.say(stateOf(item, history_.isInFlight)); }

  // In one line where there is room for all of it; otherwise the state and the identifier stand below the path.
  void writeItem(const CleaningHistoryItem& item, std::size_t stateWidth) {
    const std::string state = stateText(item), path = text_.path(item.originalPath), amount = text_.amount(item.size);
    if (!style_.text.isLaidOut) return text_.facts({uuidText(item.id), state, amount, path});
    const std::string identifier = uuidText(item.id).substr(0, identifierColumns_);
    const std::size_t before = displayWidth(amount) + identifierColumns_ + stateWidth + 4 * gap;
    if (before + leastPath <= style_.text.columns && displayWidth(state) <= stateWidth)
      return text_.facts({amount, identifier, paddedRight(state, stateWidth), path});
    text_.facts({amount, path});
    text_.words(identifier + ": " + state, gap + displayWidth(amount) + gap);
  }

  const HistoryView& history_;
  const ReportStyle& style_;
  const std::size_t identifierColumns_;
  ReportText text_;
};

void addItem(DetailLines& lines, const CleaningHistoryItem& item, const ReportStyle& style, bool isInFlight) {
  lines.add("cli.detail.path", item.originalPath);
  lines.add("cli.detail.size", ByteCount{item.size});
  lines.add("cli.detail.state", style.catalogue.text(stateOf(item, isInFlight), style.messages()));
  if (item.trashedPath) lines.add("cli.detail.trashedPath", *item.trashedPath);
  if (item.restoredPath) lines.add("cli.detail.restoredPath", *item.restoredPath);
  if (item.restoredAt) lines.add("cli.detail.restoredAt", *item.restoredAt);
  if (item.failureCategory) lines.add("cli.detail.failureKind", MessageKey{titleKey(*item.failureCategory)});
  if (item.restoreAttemptedAt) lines.add("cli.detail.restoreAttemptedAt", *item.restoreAttemptedAt);
  lines.add("cli.detail.id", uuidText(item.id));
}

Message pendingState(const CleaningHistoryItem& item, bool isInFlight) {
  if (item.pendingIrreversible) return {isInFlight ? "cli.history.state.removing" : "cli.history.state.unknown", {}};
  const bool isRestore = item.pendingRestorePath.has_value();
  if (isInFlight) return {isRestore ? "cli.history.state.restoring" : "cli.history.state.moving", {}};
  return {isRestore ? "cli.history.state.restoreInterrupted" : "cli.history.state.interrupted", {}};
}

}  // namespace

Message stateOf(const CleaningHistoryItem& item, bool isInFlight) {
  if (isPending(item)) return pendingState(item, isInFlight);
  if (item.restoredPath && *item.restoredPath != item.originalPath)
    return {"cli.history.state.restoredTo", {{"path", *item.restoredPath}}};
  if (item.restoredAt) return {"cli.history.state.restored", {}};
  if (item.outcome == CleaningHistoryItemOutcome::removed)
    return {item.dockerOperation ? "cli.history.state.pruned" : "cli.history.state.removed", {}};
  if (item.outcome == CleaningHistoryItemOutcome::failed)
    return {isAbsolute(item.originalPath.bytes) ? "cli.history.state.failed" : "cli.history.state.notRemoved",
            {{"text", item.failureReason.value_or("")}}};
  if (isRestorable(item) && !isInTrash(item)) return {"cli.history.state.noLongerInTrash", {}};
  if (item.restoreFailure)
    return {"cli.history.state.notRestored", {{"text", MessageKey{messageKey(*item.restoreFailure)}}}};
  return {"cli.history.state.inTrash", {}};
}

std::string historyReport(const HistoryView& history, std::optional<std::int64_t> limit, const ReportStyle& style) {
  return HistoryWriter(history, style).text(limit);
}

std::string entryReport(const CleaningHistoryEntry& entry, bool isInFlight, const ReportStyle& style) {
  ReportText text(style);
  text.heading(text.say({"cli.history.entry", {{"date", entry.date}, {"id", uuidText(entry.id)}}}));
  for (const CleaningHistoryItem& item : entry.items) {
    DetailLines lines(style);
    addItem(lines, item, style, isInFlight);
    text.blank();
    lines.writeTo(text);
  }
  return text.take();
}

}  // namespace quorvane
