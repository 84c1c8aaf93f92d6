#pragma once

#include "quorvane/app/cli/arguments/Arguments.h"
#include "quorvane/app/cli/terminal/OutputChannel.h"
#include "quorvane/app/messages/MessageCatalogue.h"

#include <string>

namespace quorvane {

/// The help of one command, with an example.
std::string helpText(const CommandDescription& command, const MessageCatalogue& catalogue, const TextStyle& style);

}  // namespace quorvane
