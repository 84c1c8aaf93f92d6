#pragma once

#include "quorvane/app/cli/arguments/CommandError.h"
#include "quorvane/app/cli/arguments/ValueChoices.h"
#include "quorvane/core/ScanCategory.h"
#include "quorvane/health/ProcessOrder.h"
#include "quorvane/removal/Recovery.h"
#include "quorvane/scan/locations/ScanSettings.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace quorvane {

enum class CommandName {
  overview,
  scan,
  clean,
  trash,
  history,
  historyShow,
  restore,
  undo,
  docker,
  dockerList,
  dockerClean,
  dockerRetry,
  ignore,
  ignoreList,
  ignoreAdd,
  ignoreRemove,
  status,
};

/// What every command understands.
struct GlobalOptions {
  std::optional<std::string> home = std::nullopt;
  std::optional<std::string> dataDirectory = std::nullopt;
  std::optional<HomeLayout> layout = std::nullopt;  ///< none: that of the running system
  bool json = false;
  bool isQuiet = false;
  bool hasNoColours = false;

  bool operator==(const GlobalOptions&) const = default;
};

/// What `clean` and `trash` are told of a removal.
struct RemovalArguments {
  std::optional<std::string> from = std::nullopt;  ///< a file with a reviewed result; "-" for standard input
  std::vector<std::string> select = {};
  std::vector<std::string> unselect = {};
  bool isConfirmed = false;
  bool isRehearsal = false;

  bool operator==(const RemovalArguments&) const = default;
};

/// What `docker clean` is told besides.
struct DockerArguments {
  bool takesSafe = false;
  bool prunesBuildCache = false;

  bool operator==(const DockerArguments&) const = default;
};

/// Which items `restore` puts back.
enum class RestoreChoice { named, lastRun, everything };

struct RestoreArguments {
  RestoreChoice choice = RestoreChoice::named;
  RestoreConflictPolicy onConflict = RestoreConflictPolicy::skip;

  bool operator==(const RestoreArguments&) const = default;
};

struct StatusArguments {
  bool isWatched = false;                            ///< sample after sample, until stopped
  std::chrono::milliseconds interval{2000};          ///< between them
  std::optional<std::int64_t> count = std::nullopt;  ///< of samples; none: without end
  SystemProcessSortMode sort = SystemProcessSortMode::cpu;

  bool operator==(const StatusArguments&) const = default;
};

/// One command that a person asked for.
struct Invocation {
  CommandName command = CommandName::overview;
  GlobalOptions options = {};
  std::vector<ScanCategory> categories = {};
  RemovalArguments removal = {};
  DockerArguments docker = {};
  RestoreArguments restore = {};
  StatusArguments status = {};
  std::optional<std::int64_t> limit = std::nullopt;
  std::vector<std::string> subjects = {};  ///< the arguments without a dash: PATH, ID, PATH-OR-ID

  bool operator==(const Invocation&) const = default;
};

struct HelpRequest {
  CommandName command = CommandName::overview;

  bool operator==(const HelpRequest&) const = default;
};

struct VersionRequest {
  bool operator==(const VersionRequest&) const = default;
};

using Request = std::variant<Invocation, HelpRequest, VersionRequest, CommandError>;

struct ParsedArguments {
  Request request;
  bool wantsJson = false;  ///< also where the request itself was not understood
};

/// Reads the arguments behind the program's name. Looks at no file.
ParsedArguments parseArguments(const std::vector<std::string>& arguments);

/// An option, or an argument without a dash.
struct OptionDescription {
  std::string_view name;   ///< "--home"
  std::string_view value;  ///< "DIR"; empty for a flag
  std::string_view key;    ///< message key of its description
  ValueKind kind = ValueKind::anything;
  bool repeats = false;     ///< it may be given several times
  bool isOptional = false;  ///< of an argument: the command may do without
};

struct CommandDescription {
  CommandName command;
  std::string_view words;  ///< what a person types behind "quorvane"; empty for none
  std::string_view key;
  std::string_view exampleKey;
  std::span<const OptionDescription> options;
  std::span<const OptionDescription> arguments;
  bool onlyLeadsToOthers = false;
};

/// Every command, those that only lead to others included; the one without words is the first.
std::span<const CommandDescription> commandDescriptions();

const CommandDescription& descriptionOf(CommandName command);

/// The options that every command understands.
std::span<const OptionDescription> globalOptionDescriptions();

/// Those that are reached by one more word.
std::vector<const CommandDescription*> commandsBelow(const CommandDescription& command);

/// "quorvane ignore add"
std::string fullName(const CommandDescription& command);

/// "quorvane ignore add [OPTIONS] PATH"
std::string usageOf(const CommandDescription& command);

/// "--home DIR", "PATH"
std::string spellingOf(const OptionDescription& option);

/// What it does, and the choices that it offers.
Message meaningOf(const OptionDescription& option);

}  // namespace quorvane
