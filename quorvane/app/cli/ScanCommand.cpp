#include "quorvane/app/cli/Commands.h"
#include "quorvane/app/cli/RunningOperation.h"
#include "quorvane/app/cli/ScanReport.h"

namespace quorvane {

namespace {

CommandOutcome scan(const CommandContext& context, MainLoop& loop, AppModel& model) {
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

}  // namespace

CommandOutcome runScan(const CommandContext& context) {
  return withModel(context, [&](MainLoop& loop, AppModel& model) { return scan(context, loop, model); });
}

}  // namespace quorvane
