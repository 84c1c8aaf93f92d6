#include "quorvane/app/cli/Commands.h"
#include "quorvane/app/cli/RunningOperation.h"
#include "quorvane/app/cli/StoragePicture.h"
#include "quorvane/base/Json.h"

namespace quorvane {

CommandOutcome runOverview(const CommandContext& context) {
  auto settings = requestedSettings(context);
  if (!settings) return failure(std::move(settings.error()));

  MainLoop loop;
  AppModel model(*std::move(settings), loop);
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

}  // namespace quorvane
