#include "quorvane/app/cli/Commands.h"
#include "quorvane/app/cli/RunningOperation.h"
#include "quorvane/app/cli/ScanReport.h"

namespace quorvane {

CommandOutcome runScan(const CommandContext& context) {
  auto settings = requestedSettings(context);
  if (!settings) return failure(std::move(settings.error()));

  MainLoop loop;
  AppModel model(*std::move(settings), loop);
  const CleaningScanProgressUpdate beginning{0, "scan.status.appCaches", std::nullopt};
  const auto result =
      runToEnd<ScanResult>(context.console, loop, model, beginning, [&](AppModel::Handlers<ScanResult> handlers) {
        model.scan({context.invocation.categories}, std::move(handlers));
      });
  if (!result) return failure(result.error());

  Console& console = context.console;
  if (console.wantsJson()) {
    console.print(jsonText(*result));
  } else {
    console.print(scanReport(*result, console.catalogue(), console.home(), console.outputStyle()));
  }
  return ExitCode::done;
}

}  // namespace quorvane
