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

/// Whether the place that a path leads to lies in the place that the home leads to; nothing when that cannot be told.
std::optional<bool> leadsInside(FileSystem& fileSystem, const FilePath& path, const FilePath& home) {
  const auto realPath = fileSystem.resolved(path);
  const auto realHome = fileSystem.resolved(home);
  if (!realPath || !realHome) return std::nullopt;
  return isAtOrBelow(*realPath, *realHome);
}

/// A home that was asked for may keep the program's own folder behind a link: a run must not follow it there. What
/// cannot be told now fails when it is opened.
bool keepsOwnDataInside(const GlobalOptions& options, AppModel& model) {
  if (!options.home || options.dataDirectory) return true;
  const ApplicationFolders& folders = model.settings().folders;
  return leadsInside(model.fileSystem(), folders.applicationSupport, folders.home).value_or(true);
}

}  // namespace

CommandOutcome withModel(const CommandContext& context,
                         const std::function<CommandOutcome(MainLoop&, AppModel&)>& command) {
  auto settings = requestedSettings(context);
  if (!settings) return failure(std::move(settings.error()));
  MainLoop loop;
  AppModel model(*std::move(settings), loop);
  if (keepsOwnDataInside(context.invocation.options, model)) return command(loop, model);
  const ApplicationFolders& folders = model.settings().folders;
  return failure(
      CommandError{ExitCode::refused,
                   {"cli.error.dataOutsideHome", {{"path", folders.applicationSupport}, {"home", folders.home}}}});
}

Outcome<FilePath, CommandError> pathArgument(const CommandContext& context, FileSystem& fileSystem,
                                             const FilePath& home) {
  auto path = absolutePath(context.invocation.subject, context.environment);
  if (!path || !context.invocation.options.home) return path;
  if (leadsInside(fileSystem, *path, home).value_or(false)) return path;
  return failure(CommandError{ExitCode::refused, {"cli.error.outsideHome", {{"path", *path}, {"home", home}}}});
}

CommandError homeUnreadable(const FilePath& home) {
  return {ExitCode::refused, {messageKey(ScanFault::homeUnreadable), {{"home", home.bytes}}}};
}

}  // namespace quorvane
