#include "quorvane/app/cli/Commands.h"
#include "quorvane/app/cli/RunningOperation.h"
#include "quorvane/app/cli/StoragePicture.h"
#include "quorvane/base/Json.h"

namespace quorvane {

namespace {

CommandOutcome overview(const CommandContext& context, MainLoop& loop, AppModel& model) {
  const CleaningScanProgressUpdate beginning{0, "storage.status.measuring", std::nullopt};
  const auto storage = runToEnd<StorageSnapshot>(
      context.console, loop, model, beginning,
      [&](AppModel::Handlers<StorageSnapshot> handlers) { model.measureStorage(std::move(handlers)); });
  if (!storage) return failure(storage.error());

  Console& console = context.console;
  if (console.wantsJson()) {
    console.print(printedJson(Json{{"storage", toJson(*storage)}}));
  } else {
    console.print(storagePicture(*storage, console.catalogue(), model.settings().folders.home, console.outputStyle()));
  }
  return ExitCode::done;
}

}  // namespace

CommandOutcome runOverview(const CommandContext& context) {
  return withModel(context, [&](MainLoop& loop, AppModel& model) { return overview(context, loop, model); });
}

}  // namespace quorvane
