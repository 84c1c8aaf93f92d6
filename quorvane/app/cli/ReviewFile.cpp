#include "quorvane/app/cli/ReviewFile.h"

#include "quorvane/cleaning/CleaningSelection.h"

#include <algorithm>

namespace quorvane {

namespace {

constexpr std::size_t sizeLimit = std::size_t{64} * 1024 * 1024;

// The person named it, so links on the way and at its end are followed.
Outcome<std::string, PosixError> contentOf(FileSystem& fileSystem, const FilePath& path) {
  const auto place = fileSystem.resolved(path);
  if (!place) return failure(place.error());
  const auto folder = fileSystem.openStartingFolder(parentOf(*place));
  if (!folder) return failure(folder.error());
  const auto file = fileSystem.openFile(folder->number(), std::string(leafOf(*place)).c_str());
  if (!file) return failure(file.error());
  return readToEnd(fileSystem, file->number(), sizeLimit);
}

CommandError refused(std::string key, const std::string& name, MessageArgument argument) {
  return {ExitCode::refused, {std::move(key), {{"file", name}, std::move(argument)}}};
}

Outcome<std::string, CommandError> givenText(const CommandContext& context, AppModel& model, const std::string& from) {
  Outcome<std::string, PosixError> text;
  if (from == "-") {
    text = context.console.input().readAll(sizeLimit);
  } else {
    const auto path = absoluteArgument(context, from);
    if (!path) return failure(path.error());
    text = contentOf(model.fileSystem(), *path);
  }
  if (text) return *std::move(text);
  return failure(refused("cli.error.reviewUnreadable", from, {"what", systemReason(text.error().code)}));
}

/// What is said of a file that holds something else, or a review that is too old.
struct ReviewTexts {
  std::string undecodable, undecodableAt, stale;
};
const ReviewTexts ofScan{"cli.error.reviewUndecodable", "cli.error.reviewUndecodableAt", "cli.error.staleReview"};
const ReviewTexts ofDocker{"cli.error.dockerReviewUndecodable", "cli.error.dockerReviewUndecodableAt",
                           "cli.error.dockerReviewStale"};

CommandError undecodable(const ReviewTexts& texts, const std::string& from, const JsonError& error) {
  CommandError refusal =
      refused(error.path.empty() ? texts.undecodable : texts.undecodableAt, from, {"place", error.path});
  refusal.message.arguments.push_back({"fault", MessageKey{"json.fault." + std::string(caseName(error.fault))}});
  return refusal;
}

Outcome<ScanResult, JsonError> decodedScan(std::string_view text) {
  auto result = scanResultFromJson(text);
  if (!result) return result;
  const auto negative =
      std::ranges::find_if(result->items, [](const ScanItem& item) { return item.size < 0; }) - result->items.begin();
  if (negative == std::ssize(result->items)) return result;
  return failure(JsonError{JsonFault::outOfRange, "items." + std::to_string(negative) + ".size"});
}

template <class Review>
Outcome<Review, CommandError> reviewed(const CommandContext& context, AppModel& model, const ReviewTexts& texts,
                                       Outcome<Review, JsonError> (*decoded)(std::string_view),
                                       Date Review::*finishedAt) {
  const std::string from = context.invocation.removal.from.value_or("-");
  const auto text = givenText(context, model, from);
  if (!text) return failure(text.error());
  auto review = decoded(*text);
  if (!review) return failure(undecodable(texts, from, review.error()));
  const Date now = model.clock().now();
  if (const auto stale = staleSelection((*review).*finishedAt, now))
    return failure(
        refused(stale->finishedAt > now ? "cli.error.futureReview" : texts.stale, from, {"date", stale->finishedAt}));
  return *std::move(review);
}

}  // namespace

Outcome<ScanResult, CommandError> reviewedResult(const CommandContext& context, AppModel& model) {
  return reviewed(context, model, ofScan, decodedScan, &ScanResult::finishedAt);
}

Outcome<DockerSnapshot, CommandError> reviewedSnapshot(const CommandContext& context, AppModel& model) {
  return reviewed(context, model, ofDocker, dockerSnapshotFromJson, &DockerSnapshot::checkedAt);
}

}  // namespace quorvane
