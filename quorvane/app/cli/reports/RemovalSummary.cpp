#include "quorvane/app/cli/reports/RemovalSummary.h"

#include "quorvane/app/cli/reports/ItemTable.h"
#include "quorvane/app/cli/terminal/Glyphs.h"
#include "quorvane/core/FileTreeSnapshot.h"
#include "quorvane/removal/HistoryJson.h"

#include <algorithm>
#include <array>
#include <set>

namespace quorvane {

namespace {

constexpr std::size_t namesShown = 3;

Json failureJson(const FailedItem& failed) {
  return Json{{"id", toJson(failed.id)},
              {"path", toJson(failed.path)},
              {"category", toJson(failed.refusal.category)},
              {"reasonKey", toJson(failed.refusal.reasonKey)}};
}

Json plannedJson(const ScanItem& item) { return toJson(item); }

Json plannedJson(const RemovalRequest& request) {
  Json json{{"id", toJson(request.id)},
            {"url", toJson(FileUrl{request.path})},
            {"displayName", toJson(request.name)},
            {"size", toJson(request.size)}};
  if (request.snapshot) json["snapshot"] = toJson(*request.snapshot);
  return json;
}

// No sum of what a disk holds, but of what a file says.
void addUp(std::int64_t& sum, std::int64_t size) { sum += std::min(size, INT64_MAX - sum); }

std::int64_t togetherBytes(const std::vector<ScanItem>& items) {
  std::int64_t bytes = 0;
  for (const ScanItem& item : items) addUp(bytes, item.size);
  return bytes;
}

bool isInsideOf(const std::set<FilePath>& others, const FilePath& path) {
  for (FilePath above = parentOf(path); above.bytes.size() > 1; above = parentOf(above))
    if (others.contains(above)) return true;
  return false;
}

/// Writes a summary for people.
class RemovalReportWriter {
 public:
  RemovalReportWriter(const RemovalSummary& summary, const ReportStyle& style, bool isOwnTrash)
      : summary_(summary), style_(style), isOwnTrash_(isOwnTrash), text_(style) {}

  std::string text() {
    if (summary_.isRehearsal) {
      writePlanned();
    } else {
      writeMoved();
    }
    if (!summary_.isRehearsal && summary_.movedCount > 0) writeWhatNow();
    writeFailures();
    return text_.take();
  }

 private:
  void writePlanned() {
    std::visit([this](const auto& planned) { writePlanned(planned); }, summary_.wouldMove);
  }

  void writePlanned(const std::vector<ScanItem>& items) {
    writeScanTable(text_, groupedByCategory(items), style_);
    writePlannedSum(items);
  }

  void writePlanned(const std::vector<RemovalRequest>& requests) {
    for (const RemovalRequest& request : requests) writeItem(request.size, request.path);
    if (!requests.empty()) text_.blank();
    writePlannedSum(requests);
  }

  template <class Planned>
  void writePlannedSum(const std::vector<Planned>& planned) {
    if (planned.empty()) return text_.line({"cli.clean.wouldMoveNothing", {}});
    text_.line({"cli.clean.wouldMove", {{"count", std::ssize(planned)}, {"size", ByteCount{togetherBytes(planned)}}}});
  }

  // The sum stands below the list, where it is still in sight after a long one.
  void writeMoved() {
    if (summary_.movedCount == 0) return text_.line({"cli.clean.movedNothing", {}});
    for (const CleaningHistoryEntry& entry : summary_.entries)
      for (const CleaningHistoryItem& item : entry.items)
        if (item.outcome == CleaningHistoryItemOutcome::movedToTrash) writeItem(item.size, item.originalPath);
    for (const FilePath& path : summary_.wentAlong) text_.line({"cli.clean.wentAlong", {{"path", path}}}, 2, 2);
    text_.blank();
    text_.heading(
        text_.say({"cli.clean.moved", {{"count", summary_.movedCount}, {"size", ByteCount{summary_.movedBytes}}}}));
  }

  void writeItem(std::int64_t size, const FilePath& path) { text_.facts({text_.amount(size), text_.path(path)}); }

  void writeFailures() {
    const auto notMovedCount = std::ranges::count_if(summary_.failures, isInPlace);
    if (notMovedCount == 0) return;
    text_.blank();
    text_.line({"error.cleaningPartialFailure.header", {{"count", notMovedCount}}});
    for (const CleanupFailureCategory category : allCases<CleanupFailureCategory>()) writeFailures(category);
    if (hasFailed(CleanupFailureCategory::inUse)) text_.line({"error.cleaningPartialFailure.busyHint", {}});
    if (hasFailed(CleanupFailureCategory::permission)) text_.line({"error.cleaningPartialFailure.fdaHint", {}});
    const bool isAnythingLeft = std::ranges::any_of(summary_.failures, [](const FailedItem& failed) {
      return isInPlace(failed) && failed.refusal.category != CleanupFailureCategory::missing;
    });
    if (isAnythingLeft) text_.line({"error.cleaningPartialFailure.footer", {}});
  }

  // The others are in the Trash, or may be; what is told of each of them says so.
  static bool isInPlace(const FailedItem& failed) {
    constexpr std::array elsewhere{"cleanup.journal.unavailable", "cleanup.failure.uncertain"};
    return std::ranges::find(elsewhere, failed.refusal.reasonKey) == elsewhere.end();
  }

  bool hasFailed(CleanupFailureCategory category) const {
    return std::ranges::any_of(summary_.failures, [&](const FailedItem& failed) {
      return failed.refusal.category == category && isInPlace(failed);
    });
  }

  void writeFailures(CleanupFailureCategory category) {
    std::int64_t count = 0;
    MessageList names;
    for (const FailedItem& failed : summary_.failures) {
      if (failed.refusal.category != category || !isInPlace(failed)) continue;
      if (++count <= std::int64_t{namesShown}) names.texts.push_back(failed.name);
    }
    if (count == 0) return;
    if (count > std::int64_t{namesShown}) names.texts.emplace_back(glyphs(style_.text.characters).ellipsis);
    text_.line({"error.cleaningPartialFailure.line",
                {{"category", MessageKey{titleKey(category)}}, {"count", count}, {"names", names}}},
               2, 2);
  }

  void writeWhatNow() {
    if (summary_.movedBytes > 0)
      text_.line({"cli.clean.inTrash", {{"count", summary_.movedCount}, {"size", ByteCount{summary_.movedBytes}}}});
    if (isOwnTrash_) {
      text_.line({"cli.clean.howToEmpty", {}});
    } else {
      for (const FilePath& folder : trashFolders()) text_.line({"cli.clean.liesIn", {{"path", folder}}});
    }
    writeAvailable();
    text_.line({"cli.clean.howToUndo", {}});
  }

  void writeAvailable() {
    if (!summary_.availableBytesDelta) return;
    const std::int64_t delta = *summary_.availableBytesDelta;
    const ByteCount size{delta < 0 ? -std::max(delta, -INT64_MAX) : delta};
    const char* key = delta == 0  ? "cli.clean.available.same"
                      : delta > 0 ? "cli.clean.available.more"
                                  : "cli.clean.available.less";
    text_.line({key, {{"size", size}}});
  }

  std::set<FilePath> trashFolders() const {
    std::set<FilePath> folders;
    for (const CleaningHistoryEntry& entry : summary_.entries)
      for (const CleaningHistoryItem& item : entry.items)
        if (item.trashedPath) folders.insert(parentOf(*item.trashedPath));
    return folders;
  }

  const RemovalSummary& summary_;
  const ReportStyle& style_;
  const bool isOwnTrash_;
  ReportText text_;
};

}  // namespace

std::int64_t togetherBytes(const std::vector<RemovalRequest>& requests) {
  std::set<FilePath> paths;
  for (const RemovalRequest& request : requests) paths.insert(request.path);
  std::int64_t bytes = 0;
  for (const RemovalRequest& request : requests)
    if (!isInsideOf(paths, request.path)) addUp(bytes, request.size);
  return bytes;
}

std::string jsonText(const RemovalSummary& summary) {
  Json failures = Json::array();
  for (const FailedItem& failed : summary.failures) failures.push_back(failureJson(failed));
  Json json{{"entries", toJson(summary.entries)},
            {"movedCount", summary.movedCount},
            {"failedCount", std::ssize(summary.failures)},
            {"reclaimedBytes", summary.movedBytes},
            {"failures", failures}};
  if (summary.isRehearsal) {
    json["dryRun"] = true;
    json["wouldMove"] = std::visit(
        [](const auto& planned) {
          Json list = Json::array();
          for (const auto& each : planned) list.push_back(plannedJson(each));
          return list;
        },
        summary.wouldMove);
  }
  return printedJson(json);
}

std::string removalReport(const RemovalSummary& summary, const ReportStyle& style, bool isOwnTrash) {
  return RemovalReportWriter(summary, style, isOwnTrash).text();
}

ExitCode printSummary(Console& console, const RemovalSummary& summary, std::optional<ExitCode> cancelled) {
  const bool isStoppedBefore = cancelled && summary.movedCount == 0 && summary.failures.empty();
  if (console.wantsJson()) {
    console.print(jsonText(summary));
  } else if (!isStoppedBefore) {
    // Only without another home the Trash is the one that the desktop shows.
    console.print(removalReport(summary, console.outputReport(), console.home().has_value()));
  }
  for (const FailedItem& failed : summary.failures) console.tellItem(failed.path, {failed.refusal.reasonKey, {}});
  if (cancelled) {
    const std::string key = summary.movedCount > 0 ? "cli.clean.stopped" : "cli.clean.stoppedBefore";
    console.tell({*cancelled, {key, {{"count", summary.movedCount}}}});
    return *cancelled;
  }
  return summary.failures.empty() ? ExitCode::done : ExitCode::someNotDone;
}

}  // namespace quorvane
