#include "quorvane/developer/DockerEngine.h"

#include "quorvane/base/Utf8.h"
#include "quorvane/developer/DockerCommands.h"
#include "quorvane/developer/DockerContexts.h"

namespace quorvane {

namespace {

constexpr std::size_t longestMessage = 2000;

std::optional<std::string> contextOf(const DockerEngine& client) {
  const CommandResult shown = client.ask(DockerCommands::showContext());
  if (shown.hasSucceeded()) return shownContext(shown.output);
  const CommandResult listed = client.ask(DockerCommands::listContexts());
  return listed.hasSucceeded() ? currentContext(listed.output) : std::nullopt;
}

std::optional<std::string> endpointOf(const DockerEngine& client, const std::string& context) {
  const CommandResult inspected = client.ask(DockerCommands::endpointOf(context));
  if (!inspected.hasSucceeded()) return std::nullopt;
  auto endpoint = onlyText(inspected.output);
  return endpoint && isEndpoint(*endpoint) ? std::move(endpoint) : std::nullopt;
}

}  // namespace

std::string messageKey(DockerServiceFault fault) { return "docker.error." + std::string(caseName(fault)); }

CommandResult DockerEngine::ask(const DockerClient::Arguments& arguments) const {
  return endpoint_ ? client_.runAt(*endpoint_, arguments, stop_) : client_.run(arguments, stop_);
}

std::optional<std::string> DockerEngine::identifier() const {
  const CommandResult answer = ask(DockerCommands::engineID());
  return answer.hasSucceeded() ? onlyText(answer.output) : std::nullopt;
}

std::optional<DockerCleanupScope> pinnedEngine(const DockerClient& client, const StopToken& stop) {
  const DockerEngine current(client, stop);
  auto context = contextOf(current);
  if (!context) return std::nullopt;
  auto endpoint = endpointOf(current, *context);
  if (!endpoint) return std::nullopt;
  auto identifier = DockerEngine(client, *endpoint, stop).identifier();
  if (!identifier) return std::nullopt;
  return DockerCleanupScope{*std::move(context), *std::move(endpoint), *std::move(identifier)};
}

DockerServiceError commandFailed(const CommandResult& result) {
  return {DockerServiceFault::commandFailed, std::string(trimmed(result.error).substr(0, longestMessage))};
}

}  // namespace quorvane
