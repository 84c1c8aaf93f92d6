#pragma once

#include "quorvane/app/cli/arguments/Arguments.h"

#include <string>
#include <string_view>
#include <vector>

namespace quorvane {

/// The last of the words that lead to a command: "show".
std::string_view lastWordOf(const CommandDescription& command);

/// Every command but the one without words.
std::vector<const CommandDescription*> namedCommands();

/// Every option that takes a value, each name once.
std::vector<OptionDescription> optionsWithValues();

/// The names, with `separator` between them.
std::string joinedNames(std::span<const OptionDescription> options, std::string_view separator);

/// The choices of a kind, with spaces between them. None of them holds anything that a shell takes for its own.
std::string choiceWords(ValueKind kind);

/// The script with these in the places of "@VALUE_OPTIONS@" and "@COMMANDS@".
std::string filledIn(std::string_view script, std::string_view valueOptions, std::string_view commands);

/// The text as one word of a POSIX shell.
std::string shellQuoted(std::string_view text);

}  // namespace quorvane
