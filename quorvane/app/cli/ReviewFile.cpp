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

/// What is said of a file that holds something else.
struct WrongContentKeys {
  std::string whole, at;
};
const WrongContentKeys noScanResult{"cli.error.reviewUndecodable", "cli.error.reviewUndecodableAt"};
const WrongContentKeys noDockerListing{"cli.error.dockerReviewUndecodable", "cli.error.dockerReviewUndecodableAt"};

CommandError undecodable(const WrongContentKeys& keys, const std::string& from, const JsonError& error) {
  CommandError refusal = refused(error.path.empty() ? keys.whole : keys.at, from, {"place", error.path});
  refusal.message.arguments.push_back({"fault", MessageKey{"json.fault." + std::string(caseName(error.fault))}});
  return refusal;
}

}  // namespace

Outcome<ScanResult, CommandError> reviewedResult(const CommandContext& context, AppModel& model) {
  const std::string from = context.invocation.removal.from.value_or("-");
  const auto text = givenText(context, model, from);
  if (!text) return failure(text.error());
  auto result = scanResultFromJson(*text);
  if (!result) return failure(undecodable(noScanResult, from, result.error()));
  const auto negative =
      std::ranges::find_if(result->items, [](const ScanItem& item) { return item.size < 0; }) - result->items.begin();
  if (negative < std::ssize(result->items))
    return failure(
        undecodable(noScanResult, from, {JsonFault::outOfRange, "items." + std::to_string(negative) + ".size"}));
  const Date now = model.clock().now();
  if (const auto stale = staleSelection(*result, now))
    return failure(refused(stale->finishedAt > now ? "cli.error.futureReview" : "cli.error.staleReview", from,
                           {"date", stale->finishedAt}));
  return *std::move(result);
}

Outcome<DockerSnapshot, CommandError> reviewedSnapshot(const CommandContext& context, AppModel& model) {
  const std::string from = context.invocation.removal.from.value_or("-");
  const auto text = givenText(context, model, from);
  if (!text) return failure(text.error());
  auto snapshot = dockerSnapshotFromJson(*text);
  if (!snapshot) return failure(undecodable(noDockerListing, from, snapshot.error()));
  const Date now = model.clock().now();
  if (const auto stale = staleSelection(snapshot->checkedAt, now))
    return failure(refused(stale->finishedAt > now ? "cli.error.futureReview" : "cli.error.dockerReviewStale", from,
                           {"date", stale->finishedAt}));
  return *std::move(snapshot);
}

}  // namespace quorvane
