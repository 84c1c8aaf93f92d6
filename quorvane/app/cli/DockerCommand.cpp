#include "quorvane/app/cli/Commands.h"
#include "quorvane/app/cli/RunningOperation.h"
#include "quorvane/app/cli/ServiceErrors.h"
#include "quorvane/app/cli/reports/DockerReport.h"

namespace quorvane {

namespace {

CommandOutcome list(const CommandContext& context, MainLoop& loop, AppModel& model) {
  Console& console = context.console;
  const CleaningScanProgressUpdate beginning{0, "docker.status.listing", std::nullopt};
  using Handlers = AppModel::Handlers<DockerSurvey, DockerServiceError>;
  const auto [survey, cancelled] = runOperation<DockerSurvey, DockerServiceError>(
      console, loop, model, beginning, [&](Handlers handlers) { model.surveyDocker(std::move(handlers)); });
  if (cancelled) return failure(CommandError{*cancelled, {messageKey(ScanFault::cancelled), {}}});
  if (!survey) return failure(commandError(survey.error()));
  console.print(console.wantsJson() ? jsonText(*survey) : dockerReport(*survey, console.outputReport()));
  return ExitCode::done;
}

}  // namespace

CommandOutcome runDockerList(const CommandContext& context) {
  return withModel(context, [&](MainLoop& loop, AppModel& model) { return list(context, loop, model); });
}

}  // namespace quorvane
