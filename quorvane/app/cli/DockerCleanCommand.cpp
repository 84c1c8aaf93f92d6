#include "quorvane/app/cli/RemovalCommand.h"
#include "quorvane/app/cli/ReviewFile.h"
#include "quorvane/app/cli/RunningOperation.h"
#include "quorvane/app/cli/ServiceErrors.h"
#include "quorvane/app/cli/reports/DockerSummary.h"
#include "quorvane/app/cli/review/ReviewAnswer.h"

namespace quorvane {

namespace {

const CleaningScanProgressUpdate listing{0, "docker.status.listing", std::nullopt};

/// What both commands do with a plan.
class DockerRemoval {
 public:
  explicit DockerRemoval(const RemovalTask& task) : task_(task), console_(task.console()), asked_(task.asked()) {}

  CommandOutcome confirmAndRun(const DockerReview& review, bool isInputTaken) {
    if (review.plan.removesNothing() || task_.isSettled()) return run(review);
    if (console_.wantsJson() || isInputTaken || !console_.canAsk())
      return failure(CommandError{ExitCode::refused, {"cli.error.dockerCannotAsk", {}}});
    if (isConfirmed(review)) return run(review);
    console_.show(console_.text({"cli.docker.declined", {}}) + "\n");
    return console_.wasInterrupted() ? ExitCode::cancelled : ExitCode::done;
  }

  /// An operation that only looks; cancelled, it has no result.
  template <class Result, class Start>
  Outcome<Result, CommandError> looked(Start start) {
    auto [outcome, cancelled] =
        runOperation<Result, DockerCleanupError>(console_, task_.loop, task_.model, listing, std::move(start));
    if (cancelled) return failure(CommandError{*cancelled, {"cli.docker.stoppedBefore", {}}});
    if (!outcome) return failure(commandError(outcome.error()));
    return *std::move(outcome);
  }

 private:
  bool isConfirmed(const DockerReview& review) {
    const ReportStyle style = console_.errorReport();
    console_.show(dockerReviewText(review, style));
    while (true) {
      const auto line = console_.ask(dockerQuestion(review.plan));
      if (!line) return false;
      const ReviewAnswer answer = reviewAnswerFrom(*line);
      if (std::holds_alternative<reviewAnswer::Yes>(answer)) return true;
      if (std::holds_alternative<reviewAnswer::No>(answer)) return false;
      console_.show(console_.text({"cli.docker.help", {}}) + "\n");
    }
  }

  CommandOutcome run(const DockerReview& review) {
    DockerSummary summary{.isRehearsal = asked_.isRehearsal,
                          .builtUponCount = review.builtUponCount,
                          .hasNothingToPrune = review.hasNothingToPrune};
    if (review.plan.isEmpty()) return printSummary(console_, summary, std::nullopt);
    const auto kind = asked_.isRehearsal ? AppModel::RemovalKind::rehearsal : AppModel::RemovalKind::real;
    const char* doing = asked_.isRehearsal ? "docker.status.checking" : "docker.status.removing";
    const CleaningScanProgressUpdate beginning{0, doing, std::nullopt};
    using Handlers = AppModel::Handlers<DockerCleanupReport, DockerCleanupError>;
    auto [outcome, cancelled] = runOperation<DockerCleanupReport, DockerCleanupError>(
        console_, task_.loop, task_.model, beginning,
        [&](Handlers handlers) { task_.model.cleanDocker(review.plan, kind, std::move(handlers)); });
    if (!outcome) return failure(commandError(outcome.error()));
    summary.report = *std::move(outcome);
    return printSummary(console_, summary, summary.report.wasStopped ? cancelled : std::nullopt);
  }

  const RemovalTask& task_;
  Console& console_;
  const RemovalArguments& asked_;
};

class DockerCleanCommand {
 public:
  explicit DockerCleanCommand(const RemovalTask& task) : task_(task), removal_(task_) {}

  CommandOutcome run() {
    const auto selection = givenSelection();
    if (!selection) return failure(selection.error());
    std::optional<DockerSnapshot> kept;
    if (task_.asked().from) {
      auto file = reviewedSnapshot(task_.context, task_.model);
      if (!file) return failure(file.error());
      kept = *std::move(file);
    }
    const auto review =
        removal_.looked<DockerReview>([&](AppModel::Handlers<DockerReview, DockerCleanupError> handlers) {
          task_.model.reviewDocker(*selection, kept, std::move(handlers));
        });
    if (!review) return failure(review.error());
    return removal_.confirmAndRun(*review, task_.asked().from == "-");
  }

 private:
  Outcome<DockerSelection, CommandError> givenSelection() const {
    const DockerArguments& docker = task_.context.invocation.docker;
    DockerSelection selection{.takesSafe = docker.takesSafe, .prunesBuildCache = docker.prunesBuildCache};
    for (const std::string& given : task_.asked().select) {
      auto selector = dockerSelectorFrom(given);
      if (!selector)
        return failure(CommandError{ExitCode::wrongUsage, {"cli.error.noDockerObject", {{"given", given}}}});
      selection.named.push_back(*std::move(selector));
    }
    return selection;
  }

  const RemovalTask task_;
  DockerRemoval removal_;
};

class DockerRetryCommand {
 public:
  explicit DockerRetryCommand(const RemovalTask& task) : task_(task), removal_(task_) {}

  CommandOutcome run() {
    const auto review =
        removal_.looked<DockerReview>([&](AppModel::Handlers<DockerReview, DockerCleanupError> handlers) {
          task_.model.planDockerRetry(std::move(handlers));
        });
    if (!review) return failure(review.error());
    return removal_.confirmAndRun(*review, false);
  }

 private:
  const RemovalTask task_;
  DockerRemoval removal_;
};

}  // namespace

CommandOutcome runDockerClean(const CommandContext& context) { return runRemovalCommand<DockerCleanCommand>(context); }

CommandOutcome runDockerRetry(const CommandContext& context) { return runRemovalCommand<DockerRetryCommand>(context); }

}  // namespace quorvane
