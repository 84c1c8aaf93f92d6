#pragma once

#include "quorvane/app/cli/arguments/Arguments.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane {

using Words = std::vector<std::string>;

/// What was given to the options, by their names; every option of the grammar is there.
struct OptionValues {
  std::map<std::string_view, bool> flags;
  std::map<std::string_view, Words> texts;
};

/// Reads the values of the options: a complete invocation, or what is wrong with one of them.
Request invocationOf(const CommandDescription& command, const OptionValues& values, const Words& subjects);

CommandError wrongUsage(Message message, std::optional<Message> hint);

Message seeHelp(const CommandDescription& command);

/// All that could have been given.
Message choiceOf(const Words& choices);

/// The word that was probably meant, or else the whole choice.
Message hintFor(std::string_view given, const Words& choices);

}  // namespace quorvane
