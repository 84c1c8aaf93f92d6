#include "quorvane/developer/DockerClient.h"

#include "quorvane/developer/DockerMemory.h"

#include <array>
#include <utility>

namespace quorvane {

namespace {

constexpr std::int32_t noStatus = -1;

CommandResult resultOf(SafeProcessResult done) {
  CommandResult result{std::move(done.standardOutput), std::move(done.standardError), done.exitCode};
  const char* fault = done.didTimeOut                                             ? "Command timed out."
                      : done.droppedOutputBytes > 0 || done.droppedErrorBytes > 0 ? "Too much output."
                      : !done.isOutputComplete                                    ? "Incomplete output."
                                                                                  : nullptr;
  if (fault == nullptr) return result;
  result.error = fault;
  result.exitCode = noStatus;
  return result;
}

template <class Ask>
CommandResult remembered(DockerMemory* memory, const std::string& endpoint, const DockerClient::Arguments& arguments,
                         Ask ask) {
  if (memory == nullptr) return ask();
  if (auto known = memory->known(endpoint, arguments)) return *std::move(known);
  CommandResult result = ask();
  memory->keep(endpoint, arguments, result);
  return result;
}

}  // namespace

DockerClient DockerClient::remembering(DockerMemory& memory) const {
  DockerClient client = *this;
  client.memory_ = &memory;
  return client;
}

CommandResult DockerClient::run(const Arguments& arguments, const StopToken& stop) const {
  return remembered(memory_, {}, arguments, [&] { return start(arguments, settings_.environment, stop); });
}

CommandResult DockerClient::runAt(const std::string& endpoint, const Arguments& arguments,
                                  const StopToken& stop) const {
  return remembered(memory_, endpoint, arguments, [&] { return startAt(endpoint, arguments, stop); });
}

CommandResult DockerClient::startAt(const std::string& endpoint, const Arguments& arguments,
                                    const StopToken& stop) const {
  constexpr std::array redirecting{"DOCKER_CONTEXT",   "DOCKER_HOST",    "DOCKER_TLS",   "DOCKER_TLS_VERIFY",
                                   "DOCKER_CERT_PATH", "BUILDX_BUILDER", "BUILDX_CONFIG"};
  auto environment = settings_.environment;
  for (const char* name : redirecting) environment.erase(name);
  environment.insert_or_assign("LC_ALL", "C");  // tables and states are read as texts
  // An alias, a plugin of the user's or the current builder would take a command to another engine.
  environment.insert_or_assign("DOCKER_CONFIG", "/nonexistent/docker");
  environment.insert_or_assign("DOCKER_BUILDKIT", "0");
  Arguments pinned{"--host", endpoint};
  pinned.insert(pinned.end(), arguments.begin(), arguments.end());
  return start(std::move(pinned), std::move(environment), stop);
}

CommandResult DockerClient::start(Arguments arguments, std::map<std::string, std::string> environment,
                                  const StopToken& stop) const {
  // Clients run side by side, each for some milliseconds: threads and a small heap of its own only cost it time.
  environment.try_emplace("GOMAXPROCS", "1");
  environment.try_emplace("GOGC", "400");
  ProcessRequest request;
  request.executable = settings_.program;
  request.arguments = std::move(arguments);
  request.environment = std::move(environment);
  request.timeLimit = settings_.timeLimit;
  request.outputLimit = settings_.outputLimit;
  auto done = runner_.run(request, stop);
  if (!done) return {{}, "Unable to launch command.", noStatus};
  return resultOf(*std::move(done));
}

}  // namespace quorvane
