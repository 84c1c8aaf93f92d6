#pragma once

#include "quorvane/app/messages/MessageCatalogue.h"

#include <string>

namespace quorvane {

/// The first clause of a text, without backticks: what has a place on one line beside a name.
std::string briefText(const MessageCatalogue& catalogue, const Message& message);

}  // namespace quorvane
