#include "quorvane/app/cli/arguments/Arguments.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace quorvane {

namespace {

constexpr std::array<OptionDescription, 0> none{};

constexpr OptionDescription confirmed{"--yes", "", "cli.option.yes"};
constexpr OptionDescription rehearsal{"--dry-run", "", "cli.option.dryRun"};
constexpr OptionDescription onConflict{"--on-conflict", "WHAT", "cli.option.onConflict", ValueKind::conflictPolicy};

constexpr std::array scanOptions{
    OptionDescription{"--category", "C", "cli.option.category", ValueKind::category, true},
};
constexpr std::array cleanOptions{
    OptionDescription{"--from", "FILE", "cli.option.from", ValueKind::file},
    OptionDescription{"--select", "S", "cli.option.select", ValueKind::selector, true},
    OptionDescription{"--unselect", "S", "cli.option.unselect", ValueKind::selector, true},
    confirmed,
    rehearsal,
};
constexpr std::array trashOptions{confirmed, rehearsal};
constexpr std::array dockerCleanOptions{
    OptionDescription{"--from", "FILE", "cli.option.dockerFrom", ValueKind::file},
    OptionDescription{"--select", "KIND:ID", "cli.option.dockerSelect", ValueKind::anything, true},
    OptionDescription{"--safe", "", "cli.option.safe"},
    OptionDescription{"--prune-build-cache", "", "cli.option.pruneBuildCache"},
    confirmed,
    OptionDescription{"--dry-run", "", "cli.option.dockerDryRun"},
};
constexpr std::array dockerRetryOptions{confirmed};
constexpr std::array historyOptions{OptionDescription{"--limit", "N", "cli.option.limit"}};
constexpr std::array restoreOptions{
    OptionDescription{"--last", "", "cli.option.last"},
    OptionDescription{"--all", "", "cli.option.all"},
    onConflict,
};
constexpr std::array undoOptions{onConflict};
constexpr std::array statusOptions{
    OptionDescription{"--watch", "", "cli.option.watch"},
    OptionDescription{"--interval", "S", "cli.option.interval"},
    OptionDescription{"--count", "N", "cli.option.count"},
    OptionDescription{"--sort", "WHAT", "cli.option.sort", ValueKind::sortMode},
};

constexpr std::array pathArgument{OptionDescription{"PATH", "PATH", "cli.argument.path", ValueKind::path}};
constexpr std::array trashArgument{OptionDescription{"PATH", "PATH", "cli.argument.trashPath", ValueKind::path, true}};
constexpr std::array ruleArgument{
    OptionDescription{"PATH-OR-ID", "PATH-OR-ID", "cli.argument.pathOrId", ValueKind::path}};
constexpr std::array entryArgument{OptionDescription{"ID", "ID", "cli.argument.entryId"}};
constexpr std::array entriesArgument{
    OptionDescription{"ID", "ID", "cli.argument.entryIds", ValueKind::anything, true, true}};

constexpr std::array globalOptions{
    OptionDescription{"--home", "DIR", "cli.option.home", ValueKind::folder},
    OptionDescription{"--data-dir", "DIR", "cli.option.dataDir", ValueKind::folder},
    OptionDescription{"--layout", "LAYOUT", "cli.option.layout", ValueKind::layout},
    OptionDescription{"--json", "", "cli.option.json"},
    OptionDescription{"--quiet", "", "cli.option.quiet"},
    OptionDescription{"--no-color", "", "cli.option.noColor"},
    OptionDescription{"--version", "", "cli.option.version"},
    OptionDescription{"--help", "", "cli.option.help"},
};

constexpr std::array commands{
    CommandDescription{CommandName::overview, "", "cli.command.root", "cli.example.root", none, none},
    CommandDescription{CommandName::scan, "scan", "cli.command.scan", "cli.example.scan", scanOptions, none},
    CommandDescription{CommandName::clean, "clean", "cli.command.clean", "cli.example.clean", cleanOptions, none},
    CommandDescription{CommandName::trash, "trash", "cli.command.trash", "cli.example.trash", trashOptions,
                       trashArgument},
    CommandDescription{CommandName::history, "history", "cli.command.history", "cli.example.history", historyOptions,
                       none},
    CommandDescription{CommandName::historyShow, "history show", "cli.command.history.show", "cli.example.history.show",
                       none, entryArgument},
    CommandDescription{CommandName::restore, "restore", "cli.command.restore", "cli.example.restore", restoreOptions,
                       entriesArgument},
    CommandDescription{CommandName::undo, "undo", "cli.command.undo", "cli.example.undo", undoOptions, none},
    CommandDescription{CommandName::docker, "docker", "cli.command.docker", "cli.example.docker", none, none},
    CommandDescription{CommandName::dockerList, "docker list", "cli.command.docker.list", "cli.example.docker.list",
                       none, none},
    CommandDescription{CommandName::dockerClean, "docker clean", "cli.command.docker.clean", "cli.example.docker.clean",
                       dockerCleanOptions, none},
    CommandDescription{CommandName::dockerRetry, "docker retry", "cli.command.docker.retry", "cli.example.docker.retry",
                       dockerRetryOptions, none},
    CommandDescription{CommandName::ignore, "ignore", "cli.command.ignore", "cli.example.ignore", none, none, true},
    CommandDescription{CommandName::ignoreList, "ignore list", "cli.command.ignore.list", "cli.example.ignore.list",
                       none, none},
    CommandDescription{CommandName::ignoreAdd, "ignore add", "cli.command.ignore.add", "cli.example.ignore.add", none,
                       pathArgument},
    CommandDescription{CommandName::ignoreRemove, "ignore remove", "cli.command.ignore.remove",
                       "cli.example.ignore.remove", none, ruleArgument},
    CommandDescription{CommandName::status, "status", "cli.command.status", "cli.example.status", statusOptions, none},
};

std::string_view parentOf(std::string_view words) {
  const std::size_t space = words.rfind(' ');
  return space == std::string_view::npos ? std::string_view() : words.substr(0, space);
}

std::string argumentUsage(const OptionDescription& argument) {
  const std::string name = argument.isOptional ? fmt::format("[{}]", argument.name) : std::string(argument.name);
  return argument.repeats ? name + "..." : name;
}

}  // namespace

std::span<const CommandDescription> commandDescriptions() { return commands; }

std::span<const OptionDescription> globalOptionDescriptions() { return globalOptions; }

const CommandDescription& descriptionOf(CommandName command) {
  return *std::ranges::find(commands, command, &CommandDescription::command);
}

std::vector<const CommandDescription*> commandsBelow(const CommandDescription& command) {
  std::vector<const CommandDescription*> below;
  for (const CommandDescription& candidate : commands)
    if (!candidate.words.empty() && parentOf(candidate.words) == command.words) below.push_back(&candidate);
  return below;
}

std::string fullName(const CommandDescription& command) {
  return command.words.empty() ? "quorvane" : "quorvane " + std::string(command.words);
}

std::string usageOf(const CommandDescription& command) {
  std::string usage = fullName(command);
  if (!commandsBelow(command).empty()) usage += command.onlyLeadsToOthers ? " COMMAND" : " [COMMAND]";
  for (const OptionDescription& option : command.options)
    usage += fmt::format(" [{}]{}", spellingOf(option), option.repeats ? "..." : "");
  usage += " [OPTIONS]";
  for (const OptionDescription& argument : command.arguments) usage += " " + argumentUsage(argument);
  return usage;
}

std::string spellingOf(const OptionDescription& option) {
  if (option.value.empty() || option.value == option.name) return std::string(option.name);
  return fmt::format("{} {}", option.name, option.value);
}

Message meaningOf(const OptionDescription& option) {
  return {std::string(option.key), {{"choices", MessageList{choicesOf(option.kind)}}}};
}

}  // namespace quorvane
