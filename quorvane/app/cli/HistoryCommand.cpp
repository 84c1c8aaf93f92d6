#include "quorvane/app/cli/Commands.h"
#include "quorvane/app/cli/ServiceErrors.h"
#include "quorvane/app/cli/reports/HistoryNames.h"
#include "quorvane/app/cli/reports/HistoryReport.h"

#include <algorithm>

namespace quorvane {

namespace {

CommandOutcome list(const CommandContext& context, AppModel& model) {
  auto history = model.history();
  if (!history) return failure(commandError(history.error()));
  Console& console = context.console;
  const std::optional<std::int64_t> limit = context.invocation.limit;
  if (console.wantsJson()) {
    if (limit && *limit < std::ssize(history->entries)) history->entries.resize(static_cast<std::size_t>(*limit));
    console.print(jsonText(history->entries));
  } else {
    markWhatIsGone(*history, model.fileSystem());
    console.print(historyReport(*history, limit, console.outputReport()));
  }
  return ExitCode::done;
}

CommandOutcome show(const CommandContext& context, AppModel& model) {
  auto history = model.history();
  if (!history) return failure(commandError(history.error()));
  if (!context.console.wantsJson()) markWhatIsGone(*history, model.fileSystem());
  const auto named = HistoryNames(history->entries).find(context.invocation.subjects.front());
  if (!named) return failure(named.error());
  Console& console = context.console;
  console.print(console.wantsJson() ? jsonText(*named->entry)
                                    : entryReport(*named->entry, history->isInFlight, console.outputReport()));
  return ExitCode::done;
}

}  // namespace

CommandOutcome runHistory(const CommandContext& context) {
  return withModel(context, [&](MainLoop&, AppModel& model) { return list(context, model); });
}

CommandOutcome runHistoryShow(const CommandContext& context) {
  return withModel(context, [&](MainLoop&, AppModel& model) { return show(context, model); });
}

}  // namespace quorvane
