#include "quorvane/app/cli/Commands.h"

#include "quorvane/app/model/HomeSettings.h"
#include "quorvane/core/AppPaths.h"
#include "quorvane/developer/DockerPrograms.h"

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

/// The path, if a run that may only touch one home may touch what `place` leads to.
Outcome<FilePath, CommandError> confined(const CommandContext& context, AppModel& model, const FilePath& path,
                                         const FilePath& place) {
  const FilePath& home = model.settings().folders.home;
  if (!context.invocation.options.home) return path;
  if (leadsInside(model.fileSystem(), place, home).value_or(false)) return path;
  return failure(CommandError{ExitCode::refused, {"cli.error.outsideHome", {{"path", path}, {"home", home}}}});
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
  const auto texts = [&console = context.console](std::string_view key) { return console.catalogue().text(key); };
  AppModel model(*std::move(settings), texts, loop,
                 {context.environment.dockerPlaces.value_or(dockerPlaces()), context.environment.variables});
  if (keepsOwnDataInside(context.invocation.options, model)) return command(loop, model);
  const ApplicationFolders& folders = model.settings().folders;
  return failure(
      CommandError{ExitCode::refused,
                   {"cli.error.dataOutsideHome", {{"path", folders.applicationSupport}, {"home", folders.home}}}});
}

Outcome<FilePath, CommandError> absoluteArgument(const CommandContext& context, const std::string& given) {
  return absolutePath(given, context.environment);
}

Outcome<FilePath, CommandError> pathArgument(const CommandContext& context, AppModel& model, const std::string& given) {
  auto path = absolutePath(given, context.environment);
  return path ? confined(context, model, *path, *path) : path;
}

Outcome<FilePath, CommandError> objectArgument(const CommandContext& context, AppModel& model,
                                               const std::string& given) {
  auto path = absolutePath(given, context.environment);
  return path ? confined(context, model, *path, parentOf(*path)) : path;
}

CommandError homeUnreadable(const FilePath& home) {
  return {ExitCode::refused, {messageKey(ScanFault::homeUnreadable), {{"home", home.bytes}}}};
}

}  // namespace quorvane
