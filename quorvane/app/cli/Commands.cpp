#include "quorvane/app/cli/Commands.h"

#include "quorvane/app/model/HomeSettings.h"
#include "quorvane/core/AppPaths.h"

namespace quorvane {

namespace {

CommandError wrongUsage(Message message) { return {ExitCode::wrongUsage, std::move(message)}; }

Outcome<FilePath, CommandError> absolutePath(const std::string& given, const CommandLineEnvironment& environment) {
  if (given.starts_with('/')) return standardised({given});
  if (!environment.workingFolder)
    return failure(wrongUsage({"cli.error.workingFolderUnknown", {{"path", FilePath{given}}}}));
  return standardised(joined(*environment.workingFolder, given));
}

Outcome<std::optional<FilePath>, CommandError> absoluteIfGiven(const std::optional<std::string>& given,
                                                               const CommandLineEnvironment& environment) {
  if (!given) return std::optional<FilePath>();
  auto path = absolutePath(*given, environment);
  if (!path) return failure(std::move(path.error()));
  return std::optional(*std::move(path));
}

Outcome<ScanSettings, CommandError> requestedSettings(const CommandContext& context) {
  const GlobalOptions& options = context.invocation.options;
  auto home = absoluteIfGiven(options.home, context.environment);
  if (!home) return failure(std::move(home.error()));
  auto support = absoluteIfGiven(options.dataDirectory, context.environment);
  if (!support) return failure(std::move(support.error()));

  auto folders =
      applicationFolders({*home, *support, context.environment.variables, std::string(AppPaths::folderName)});
  if (!folders) return failure(CommandError{ExitCode::refused, {"cli.error.homeUnknown", {}}});
  if (!options.home) context.console.setHome(folders->home);
  return scanSettings({*std::move(folders), options.layout.value_or(systemHomeLayout()), options.home.has_value()});
}

}  // namespace

CommandOutcome withModel(const CommandContext& context,
                         const std::function<CommandOutcome(MainLoop&, AppModel&)>& command) {
  auto settings = requestedSettings(context);
  if (!settings) return failure(std::move(settings.error()));
  MainLoop loop;
  AppModel model(*std::move(settings), loop);
  return command(loop, model);
}

Outcome<FilePath, CommandError> pathArgument(const CommandContext& context, FileSystem& fileSystem,
                                             const FilePath& home) {
  auto path = absolutePath(context.invocation.subject, context.environment);
  if (!path || !context.invocation.options.home) return path;
  const auto realPath = fileSystem.resolved(*path);
  const auto realHome = fileSystem.resolved(home);
  if (realPath && realHome && isAtOrBelow(*realPath, *realHome)) return path;
  return failure(CommandError{ExitCode::refused, {"cli.error.outsideHome", {{"path", *path}, {"home", home}}}});
}

CommandError homeUnreadable(const FilePath& home) {
  return {ExitCode::refused, {messageKey(ScanFault::homeUnreadable), {{"home", home.bytes}}}};
}

}  // namespace quorvane
