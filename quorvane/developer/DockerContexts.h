#pragma once

#include <optional>
#include <string>
#include <string_view>

// What the client says of its contexts and of the engine behind one.

namespace quorvane {

/// The name in the output of `context show`: one line that is a context's name.
std::optional<std::string> shownContext(std::string_view output);

/// The name of the one context that is marked as current in the lines of `context ls`.
std::optional<std::string> currentContext(std::string_view output);

/// The one JSON text that an output holds, when it is not empty.
std::optional<std::string> onlyText(std::string_view output);

/// Whether it can be the address of an engine: a scheme, "://", and no blank or control character.
bool isEndpoint(std::string_view text);

/// Whether the address is a socket of this machine, so that nobody else can stand behind it.
bool isLocalEndpoint(std::string_view endpoint);

}  // namespace quorvane
