#include "quorvane/app/cli/Commands.h"
#include "quorvane/app/cli/RunningOperation.h"
#include "quorvane/app/cli/reports/ScanReport.h"

namespace quorvane {

namespace {

CommandOutcome scan(const CommandContext& context, MainLoop& loop, AppModel& model) {
  const auto result = scanToEnd(context.console, loop, model, {context.invocation.categories});
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
