#include "quorvane/app/cli/Arguments.h"

#include <algorithm>
#include <array>

namespace quorvane {

namespace {

constexpr std::array<OptionDescription, 0> none{};

constexpr std::array scanOptions{
    OptionDescription{"--category", "C", "cli.option.category"},
};
constexpr std::array pathArgument{OptionDescription{"PATH", "PATH", "cli.argument.path"}};
constexpr std::array ruleArgument{OptionDescription{"PATH-OR-ID", "PATH-OR-ID", "cli.argument.pathOrId"}};

constexpr std::array globalOptions{
    OptionDescription{"--home", "DIR", "cli.option.home"},
    OptionDescription{"--data-dir", "DIR", "cli.option.dataDir"},
    OptionDescription{"--layout", "LAYOUT", "cli.option.layout"},
    OptionDescription{"--json", "", "cli.option.json"},
    OptionDescription{"--quiet", "", "cli.option.quiet"},
    OptionDescription{"--no-color", "", "cli.option.noColor"},
    OptionDescription{"--version", "", "cli.option.version"},
    OptionDescription{"--help", "", "cli.option.help"},
};

constexpr std::array commands{
    CommandDescription{CommandName::overview, "", "cli.command.root", "cli.example.root", none, none},
    CommandDescription{CommandName::scan, "scan", "cli.command.scan", "cli.example.scan", scanOptions, none},
    CommandDescription{CommandName::ignore, "ignore", "cli.command.ignore", "cli.example.ignore", none, none},
    CommandDescription{CommandName::ignoreList, "ignore list", "cli.command.ignore.list", "cli.example.ignore.list",
                       none, none},
    CommandDescription{CommandName::ignoreAdd, "ignore add", "cli.command.ignore.add", "cli.example.ignore.add", none,
                       pathArgument},
    CommandDescription{CommandName::ignoreRemove, "ignore remove", "cli.command.ignore.remove",
                       "cli.example.ignore.remove", none, ruleArgument},
};

std::string_view parentOf(std::string_view words) {
  const std::size_t space = words.rfind(' ');
  return space == std::string_view::npos ? std::string_view() : words.substr(0, space);
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

}  // namespace quorvane
