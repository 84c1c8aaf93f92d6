#include "quorvane/app/cli/RemovalCommand.h"
#include "quorvane/app/cli/RemovalRun.h"
#include "quorvane/app/cli/RunningOperation.h"
#include "quorvane/app/cli/ServiceErrors.h"
#include "quorvane/app/cli/review/ReviewAnswer.h"

#include <set>

namespace quorvane {

namespace {

/// What was found at the paths that a person named.
struct Review {
  std::vector<RemovalRequest> requests;
  std::vector<FailedItem> refused;
};

/// The command that moves any paths.
class TrashCommand {
 public:
  explicit TrashCommand(const RemovalTask& task) : task_(task), console_(task.console()), asked_(task.asked()) {}

  CommandOutcome run() {
    const auto paths = givenPaths();
    if (!paths) return failure(paths.error());
    auto review = reviewed(*paths);
    if (!review) return failure(review.error());
    if (review->requests.empty()) return nothingToMove(std::move(review->refused));
    return task_.moveIfConfirmed(
        false, [&] { return isConfirmed(*review); }, [&] { return move(*review); });
  }

 private:
  Outcome<std::vector<FilePath>, CommandError> givenPaths() {
    std::vector<FilePath> paths;
    std::set<FilePath> known;
    for (const std::string& given : task_.context.invocation.subjects) {
      const auto path = objectArgument(task_.context, task_.model, given);
      if (!path) return failure(path.error());
      if (known.insert(*path).second) paths.push_back(*path);
    }
    return paths;
  }

  Outcome<Review, CommandError> reviewed(const std::vector<FilePath>& paths) {
    using Paths = std::vector<ReviewedPath>;
    const CleaningScanProgressUpdate beginning{0, "cleanup.status.reviewing", std::nullopt};
    auto [outcome, cancelled] = runOperation<Paths, RemovalError>(
        console_, task_.loop, task_.model, beginning,
        [&](AppModel::Handlers<Paths, RemovalError> handlers) { task_.model.reviewPaths(paths, std::move(handlers)); });
    if (cancelled) return failure(CommandError{*cancelled, {"cli.clean.stoppedBefore", {}}});
    if (!outcome) return failure(commandError(outcome.error()));
    Review review;
    for (ReviewedPath& each : *outcome) {
      if (each.outcome) {
        review.requests.push_back(*std::move(each.outcome));
      } else {
        review.refused.push_back({each.id, each.path, std::string(leafOf(each.path)), each.outcome.error()});
      }
    }
    return review;
  }

  CommandOutcome nothingToMove(std::vector<FailedItem> refused) {
    RemovalSummary summary;
    summary.isRehearsal = asked_.isRehearsal;
    summary.failures = std::move(refused);
    summary.wouldMove = std::vector<RemovalRequest>();
    return printSummary(console_, summary, std::nullopt);
  }

  CommandOutcome move(const Review& review) {
    return runRemoval(console_, task_.loop, task_.model, asked_.isRehearsal, review.requests, review.refused,
                      [&](AppModel::RemovalKind kind, RemovalHandlers handlers) {
                        task_.model.trash(review.requests, kind, std::move(handlers));
                      });
  }

  bool isConfirmed(const Review& review) {
    const ReportStyle style = console_.errorReport();
    ReportText text(style);
    for (const RemovalRequest& request : review.requests)
      text.facts({text.amount(request.size), text.path(request.path)});
    for (const FailedItem& refused : review.refused)
      text.line({"cli.trash.leftOut", {{"path", refused.path}, {"text", MessageKey{refused.refusal.reasonKey}}}}, 2, 2);
    console_.show(text.take());
    while (true) {
      const auto line =
          console_.ask({"cli.trash.question",
                        {{"count", std::ssize(review.requests)}, {"size", ByteCount{togetherBytes(review.requests)}}}});
      if (!line) return false;
      const ReviewAnswer answer = reviewAnswerFrom(*line);
      if (!std::holds_alternative<reviewAnswer::Help>(answer)) return std::holds_alternative<reviewAnswer::Yes>(answer);
      text.line({"cli.trash.help", {}});
      console_.show(text.take());
    }
  }

  const RemovalTask task_;
  Console& console_;
  const RemovalArguments& asked_;
};

}  // namespace

CommandOutcome runTrash(const CommandContext& context) { return runRemovalCommand<TrashCommand>(context); }

}  // namespace quorvane
