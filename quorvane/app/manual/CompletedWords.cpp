#include "quorvane/app/manual/CompletedWords.h"

#include <fmt/ranges.h>

#include <algorithm>

namespace quorvane {

std::string_view lastWordOf(const CommandDescription& command) {
  return command.words.substr(command.words.rfind(' ') + 1);
}

std::vector<const CommandDescription*> namedCommands() {
  std::vector<const CommandDescription*> named;
  for (const CommandDescription& command : commandDescriptions())
    if (!command.words.empty()) named.push_back(&command);
  return named;
}

std::vector<OptionDescription> optionsWithValues() {
  std::vector<OptionDescription> found;
  const auto add = [&](std::span<const OptionDescription> options) {
    for (const OptionDescription& option : options) {
      const bool isKnown = std::ranges::count(found, option.name, &OptionDescription::name) > 0;
      if (!option.value.empty() && !isKnown) found.push_back(option);
    }
  };
  add(globalOptionDescriptions());
  for (const CommandDescription& command : commandDescriptions()) add(command.options);
  return found;
}

std::string joinedNames(std::span<const OptionDescription> options, std::string_view separator) {
  std::vector<std::string_view> names;
  names.reserve(options.size());
  for (const OptionDescription& option : options) names.push_back(option.name);
  return fmt::format("{}", fmt::join(names, separator));
}

std::string choiceWords(ValueKind kind) { return fmt::format("{}", fmt::join(choicesOf(kind), " ")); }

std::string filledIn(std::string_view script, std::string_view valueOptions, std::string_view commands) {
  constexpr std::string_view first = "@VALUE_OPTIONS@", second = "@COMMANDS@";
  std::string text(script);
  text.replace(text.find(first), first.size(), valueOptions);
  text.replace(text.find(second), second.size(), commands);
  return text;
}

std::string shellQuoted(std::string_view text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

}  // namespace quorvane
