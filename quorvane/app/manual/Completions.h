#pragma once

#include "quorvane/app/messages/MessageCatalogue.h"

#include <string>

// Scripts that teach a shell to complete the words of quorvane: commands, options, the choices of their values, and
// names of files where these are wanted. They start no program.

namespace quorvane {

std::string bashCompletion();
std::string zshCompletion(const MessageCatalogue& catalogue);
std::string fishCompletion(const MessageCatalogue& catalogue);

}  // namespace quorvane
