#include "quorvane/app/cli/reports/DockerSummary.h"

#include "quorvane/developer/DockerNames.h"
#include "quorvane/removal/HistoryJson.h"

#include <algorithm>

namespace quorvane {

namespace {

/// The engines of a plan, each once; mostly one.
std::vector<DockerCleanupScope> scopesOf(const DockerCleanupPlan& plan) {
  std::vector<DockerCleanupScope> scopes;
  const auto add = [&](const DockerCleanupScope& scope) {
    if (std::ranges::find(scopes, scope) == scopes.end()) scopes.push_back(scope);
  };
  for (const DockerRetryTarget& each : plan.targets) add(each.scope);
  if (plan.prune) add(plan.prune->scope);
  return scopes;
}

/// Writes of which engine a plan is, one target a line, and what the prune is.
void writePlan(ReportText& text, const DockerCleanupPlan& plan) {
  for (const DockerCleanupScope& scope : scopesOf(plan))
    text.line({"cli.docker.engine", {{"context", scope.context}, {"endpoint", scope.endpoint}}});
  for (const DockerRetryTarget& each : plan.targets)
    text.facts({text.amount(each.target.sizeBytes), text.say({titleKey(each.resource), {}}),
                text.path({each.target.displayName}), text.path({each.target.commandTarget})});
  if (!plan.prune) return;
  text.line(
      {"cli.docker.willPrune",
       {{"count", std::ssize(plan.prune->reviewedTargets)}, {"size", ByteCount{sumOf(plan.prune->reviewedTargets)}}}});
}

Json failureJson(const DockerCleanupFailure& failed) {
  return Json{{"target", toJson(failed.target)},
              {"resource", toJson(failed.resource)},
              {"reasonKey", failed.refusal.reasonKey}};
}

/// Of a review or a summary: what was selected and is left out all the same.
template <class Selected>
void writeLeftOut(ReportText& text, const Selected& selected) {
  if (selected.builtUponCount > 0) text.line({"cli.docker.builtUpon", {{"count", selected.builtUponCount}}});
  if (selected.hasNothingToPrune) text.line({"cli.docker.nothingToPrune", {}});
}

/// Writes what came of a run.
class SummaryWriter {
 public:
  SummaryWriter(const DockerSummary& summary, const ReportStyle& style) : summary_(summary), text_(style) {}

  std::string text() {
    if (summary_.isRehearsal) {
      writePlan(text_, summary_.report.wouldRemove);
      text_.line(
          {summary_.report.wouldRemove.isEmpty() ? "cli.docker.wouldRemoveNothing" : "cli.docker.wouldRemove", {}});
    } else {
      writeRemoved();
    }
    writeLeftOut(text_, summary_);
    return text_.take();
  }

 private:
  void writeRemoved() {
    const auto& items = summary_.report.result.historyItems;
    const auto isRemovedObject = [](const CleaningHistoryItem& item) {
      return item.outcome == CleaningHistoryItemOutcome::removed && !item.dockerOperation;
    };
    const auto count = std::ranges::count_if(items, isRemovedObject);
    for (const CleaningHistoryItem& item : items)
      if (isRemovedObject(item))
        text_.facts({text_.amount(item.size), text_.path({item.name}), text_.path(item.originalPath)});
    if (count > 0) {
      text_.blank();
      text_.heading(text_.say({"cli.docker.removed", {{"count", count}}}));
    }
    const auto uncertain = std::ranges::count_if(
        summary_.report.failures, [](const DockerCleanupFailure& each) { return each.refusal.isUncertain; });
    if (count + uncertain == 0 && !summary_.report.prunedCount) text_.line({"cli.docker.removedNothing", {}});
    if (uncertain > 0) text_.line({"cli.docker.uncertain", {{"count", uncertain}}});
    writePruned();
    for (const DockerCleanupOutcome& outcome : summary_.report.outcomes) writeBytes(outcome);
    if (std::ranges::any_of(summary_.report.outcomes, isOtherThanPredicted))
      text_.line({"cli.docker.whyDifferent", {}});
  }

  void writePruned() {
    const auto& count = summary_.report.prunedCount;
    if (count == 0) return text_.line({"cli.docker.prunedNothing", {}});
    for (const CleaningHistoryItem& item : summary_.report.result.historyItems)
      if (count && item.dockerOperation)
        text_.line({"cli.docker.pruned",
                    {{"count", *count},
                     {"reviewed", std::ssize(item.dockerOperation->reviewedTargets)},
                     {"size", ByteCount{item.size}}}});
  }

  static bool isOtherThanPredicted(const DockerCleanupOutcome& outcome) {
    return outcome.isMeasured && outcome.reclaimedBytes != outcome.predictedBytes;
  }

  void writeBytes(const DockerCleanupOutcome& outcome) {
    const bool isEmptyPrune = outcome.resource == DockerResourceKind::buildCache && summary_.report.prunedCount == 0;
    if (outcome.successfulCount == 0 || isEmptyPrune) return;
    text_.line({outcome.isMeasured  ? "cli.docker.measured"
                : outcome.usageGrew ? "cli.docker.usedMore"
                                    : "cli.docker.unmeasured",
                {{"resource", MessageKey{titleKey(outcome.resource)}},
                 {"size", ByteCount{outcome.reclaimedBytes}},
                 {"predicted", ByteCount{outcome.predictedBytes}}}});
  }

  const DockerSummary& summary_;
  ReportText text_;
};

FilePath placeOf(const DockerCleanupFailure& failed) {
  if (failed.resource == DockerResourceKind::buildCache) return {std::string(buildCacheLocation)};
  return {historyLocation(failed.resource, failed.target)};
}

bool isUnrecorded(const DockerCleanupOutcome& outcome) {
  return !outcome.historyWasRecorded && outcome.successfulCount > 0;
}

}  // namespace

std::string dockerReviewText(const DockerReview& review, const ReportStyle& style) {
  ReportText text(style);
  if (review.retriedRun) text.line({"cli.docker.retriedRun", {{"date", *review.retriedRun}}});
  writePlan(text, review.plan);
  writeLeftOut(text, review);
  for (const DockerCleanupFailure& failed : review.plan.refused)
    text.line({"cli.trash.leftOut",
               {{"path", placeOf(failed)},
                {"text", text.say({failed.refusal.reasonKey, {{"what", failed.refusal.detail}}})}}});
  return text.take();
}

Message dockerQuestion(const DockerCleanupPlan& plan) {
  std::int64_t bytes = plan.prune ? sumOf(plan.prune->reviewedTargets) : 0;
  for (const DockerRetryTarget& each : plan.targets) addSize(bytes, each.target.sizeBytes);
  if (plan.targets.empty()) return {"cli.docker.questionOfPrune", {{"size", ByteCount{bytes}}}};
  const char* key = plan.prune ? "cli.docker.questionWithPrune" : "cli.docker.question";
  return {key, {{"count", std::ssize(plan.targets)}, {"size", ByteCount{bytes}}}};
}

std::string jsonText(const DockerSummary& summary) {
  Json failures = Json::array();
  for (const DockerCleanupFailure& failed : summary.report.failures) failures.push_back(failureJson(failed));
  Json json{{"outcomes", toJson(summary.report.outcomes)},
            {"historyItems", toJson(summary.report.result.historyItems)},
            {"failures", std::move(failures)}};
  if (summary.isRehearsal) {
    json["dryRun"] = true;
    json["wouldRemove"] = toJson(summary.report.wouldRemove.targets);
    json["wouldPruneBuildCache"] = summary.report.wouldRemove.prune.has_value();
  }
  return printedJson(json);
}

std::string dockerSummaryText(const DockerSummary& summary, const ReportStyle& style) {
  return SummaryWriter(summary, style).text();
}

ExitCode printSummary(Console& console, const DockerSummary& summary, std::optional<ExitCode> cancelled) {
  const DockerCleanupReport& report = summary.report;
  console.print(console.wantsJson() ? jsonText(summary) : dockerSummaryText(summary, console.outputReport()));
  for (const DockerCleanupFailure& failed : report.failures)
    console.tellItem(placeOf(failed), {failed.refusal.reasonKey, {{"what", failed.refusal.detail}}});
  const bool hasUnrecorded = std::ranges::any_of(report.outcomes, isUnrecorded);
  if (hasUnrecorded) console.tell({ExitCode::someNotDone, {"cleanup.irreversible.notRecorded", {}}});
  if (cancelled) {
    console.tell({*cancelled, {"cli.docker.stopped", {{"count", std::ssize(report.result.successfulTargets)}}}});
    return *cancelled;
  }
  const bool isWhole = report.failures.empty() && !hasUnrecorded;
  return isWhole ? ExitCode::done : ExitCode::someNotDone;
}

}  // namespace quorvane
