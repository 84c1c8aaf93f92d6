#include "quorvane/developer/DockerContexts.h"

#include "quorvane/base/Json.h"
#include "quorvane/base/Utf8.h"
#include "quorvane/developer/DockerListing.h"
#include "quorvane/developer/DockerNames.h"

#include <algorithm>

namespace quorvane {

namespace {

bool isInContextName(char c) { return isLetterOrDigit(c) || c == '_' || c == '.' || c == '+' || c == '-'; }

// Handed to the client again, so it must not look like an option.
bool isContextName(std::string_view name) {
  return !name.empty() && isLetterOrDigit(name.front()) && std::ranges::all_of(name, isInContextName);
}

bool isPrintable(char c) { return c > ' ' && c < 0x7f; }

}  // namespace

std::optional<std::string> shownContext(std::string_view output) {
  const std::string_view name = trimmed(output);
  return isContextName(name) ? std::optional<std::string>(name) : std::nullopt;
}

std::optional<std::string> currentContext(std::string_view output) {
  std::optional<std::string> current;
  for (const std::string_view line : linesOf(output)) {
    const auto json = parsedJson(line);
    if (!json || !json->is_object()) return std::nullopt;
    const auto mark = json->find("Current"), name = json->find("Name");
    if (mark == json->end() || name == json->end() || !mark->is_boolean() || !name->is_string()) return std::nullopt;
    if (!mark->get<bool>()) continue;
    if (current || !isContextName(name->get_ref<const std::string&>())) return std::nullopt;
    current = name->get<std::string>();
  }
  return current;
}

std::optional<std::string> onlyText(std::string_view output) {
  auto text = recordFromText<std::string>(output);
  if (!text || text->empty()) return std::nullopt;
  return *std::move(text);
}

bool isEndpoint(std::string_view text) {
  const std::size_t scheme = text.find("://");
  if (scheme == 0 || scheme == std::string_view::npos || scheme + 3 >= text.size()) return false;
  return std::ranges::all_of(text.substr(0, scheme), isLetterOrDigit) && std::ranges::all_of(text, isPrintable);
}

bool isLocalEndpoint(std::string_view endpoint) { return endpoint.starts_with("unix:///") && isEndpoint(endpoint); }

}  // namespace quorvane
