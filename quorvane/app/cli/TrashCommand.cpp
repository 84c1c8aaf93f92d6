#include "quorvane/app/cli/Confirmation.h"
#include "quorvane/app/cli/RemovalRun.h"
#include "quorvane/app/cli/ReviewAnswer.h"
#include "quorvane/app/cli/RunningOperation.h"
#include "quorvane/app/cli/ServiceErrors.h"
#include "quorvane/app/messages/ByteFormat.h"
#include "quorvane/app/messages/TextLayout.h"

#include <algorithm>

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
  TrashCommand(const CommandContext& context, MainLoop& loop, AppModel& model)
      : context_(context), console_(context.console), asked_(context.invocation.removal), loop_(loop), model_(model) {}

  CommandOutcome run() {
    const auto paths = givenPaths();
    if (!paths) return failure(paths.error());
    auto review = reviewed(*paths);
    if (!review) return failure(review.error());
    if (review->requests.empty()) return nothingToMove(std::move(review->refused));
    if (!asked_.isRehearsal && !asked_.isConfirmed) {
      if (auto refusal = whyNotToAsk(console_, false)) return failure(*std::move(refusal));
      if (!isConfirmed(*review)) return declined(console_);
    }
    return runRemoval(console_, loop_, model_, asked_.isRehearsal, review->requests, std::move(review->refused),
                      [&](AppModel::RemovalKind kind, RemovalHandlers handlers) {
                        model_.trash(review->requests, kind, std::move(handlers));
                      });
  }

 private:
  Outcome<std::vector<FilePath>, CommandError> givenPaths() {
    std::vector<FilePath> paths;
    for (const std::string& given : context_.invocation.subjects) {
      auto path = objectArgument(context_, model_, given);
      if (!path) return failure(path.error());
      if (std::ranges::find(paths, *path) == paths.end()) paths.push_back(*std::move(path));
    }
    return paths;
  }

  Outcome<Review, CommandError> reviewed(const std::vector<FilePath>& paths) {
    using Paths = std::vector<ReviewedPath>;
    const CleaningScanProgressUpdate beginning{0, "cleanup.status.reviewing", std::nullopt};
    auto [outcome, cancelled] = runOperation<Paths, RemovalError>(
        console_, loop_, model_, beginning,
        [&](AppModel::Handlers<Paths, RemovalError> handlers) { model_.reviewPaths(paths, std::move(handlers)); });
    if (cancelled) return failure(CommandError{*cancelled, {"cli.clean.stoppedBefore", {}}});
    if (!outcome) return failure(commandError(outcome.error()));
    Review review;
    for (const ReviewedPath& each : *outcome) {
      if (each.outcome) {
        review.requests.push_back(*each.outcome);
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

  bool isConfirmed(const Review& review) {
    const ReportStyle style = console_.errorReport();
    ReportText text(style);
    std::int64_t bytes = 0;
    for (const RemovalRequest& request : review.requests) {
      bytes += request.size;
      text.fitted(paddedLeft(ByteFormat::text(style.catalogue, request.size), 9) + "  " + text.path(request.path), 2);
    }
    for (const FailedItem& refused : review.refused)
      text.line({"cli.trash.leftOut", {{"path", refused.path}, {"text", MessageKey{refused.refusal.reasonKey}}}}, 2, 2);
    console_.show(text.take());
    while (true) {
      const auto line =
          console_.ask({"cli.trash.question", {{"count", std::ssize(review.requests)}, {"size", ByteCount{bytes}}}});
      if (!line) return false;
      const ReviewAnswer answer = reviewAnswerFrom(*line);
      if (!std::holds_alternative<reviewAnswer::Help>(answer)) return std::holds_alternative<reviewAnswer::Yes>(answer);
      text.line({"cli.trash.help", {}});
      console_.show(text.take());
    }
  }

  const CommandContext& context_;
  Console& console_;
  const RemovalArguments& asked_;
  MainLoop& loop_;
  AppModel& model_;
};

}  // namespace

CommandOutcome runTrash(const CommandContext& context) {
  return withModel(context, [&](MainLoop& loop, AppModel& model) { return TrashCommand(context, loop, model).run(); });
}

}  // namespace quorvane
