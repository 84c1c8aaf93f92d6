#include "quorvane/app/cli/ServiceErrors.h"

#include "quorvane/app/cli/terminal/Console.h"
#include "quorvane/developer/DockerPrograms.h"

#include <utility>

namespace quorvane {

namespace {

ExitCode exitCodeOf(IgnoreRuleFault fault) {
  switch (fault) {
    case IgnoreRuleFault::notFound:
    case IgnoreRuleFault::invalidPath: return ExitCode::wrongUsage;
    case IgnoreRuleFault::untrustedFolder:
    case IgnoreRuleFault::untrusted:
    case IgnoreRuleFault::unreadable:
    case IgnoreRuleFault::undecodable:
    case IgnoreRuleFault::busy:
    case IgnoreRuleFault::notWritten: return ExitCode::refused;
  }
  std::unreachable();
}

CommandError removalError(const IgnoreRuleError& error) { return commandError(error); }
CommandError removalError(const RecoveryStoreError& error) { return commandError(error); }
CommandError removalError(PosixError error) {
  return {ExitCode::refused, {messageKey(RemovalError(error)), {{"what", systemReason(error.code)}}}};
}

CommandError dockerError(const DockerServiceError& error) { return commandError(error); }
CommandError dockerError(const RecoveryStoreError& error) { return commandError(error); }
CommandError dockerError(DockerReviewFault fault) { return {ExitCode::refused, {messageKey(fault), {}}}; }
CommandError dockerError(const DockerSelector& selector) {
  return {ExitCode::wrongUsage, {"cli.error.notReviewed", {{"given", selector.id}}}};
}
CommandError dockerError(DockerRetryFault fault) {
  return {fault == DockerRetryFault::nothing ? ExitCode::wrongUsage : ExitCode::refused, {messageKey(fault), {}}};
}

}  // namespace

CommandError commandError(const IgnoreRuleError& error, const std::string& path) {
  return {exitCodeOf(error.fault),
          {messageKey(error.fault),
           {{"file", error.file}, {"path", FilePath{path}}, {"what", systemReason(error.reason.code)}}}};
}

CommandError commandError(const RecoveryStoreError& error) {
  return {ExitCode::refused,
          {messageKey(error.fault), {{"file", error.file}, {"what", systemReason(error.reason.code)}}}};
}

CommandError commandError(const DockerServiceError& error) {
  MessageList places;
  for (const FilePath& place : dockerPlaces()) places.texts.push_back(place.bytes);
  return {ExitCode::refused, {messageKey(error.fault), {{"what", error.message}, {"places", places}}}};
}

CommandError commandError(const DockerCleanupError& error) {
  return std::visit([](const auto& each) { return dockerError(each); }, error);
}

CommandError commandError(const RemovalError& error) {
  return std::visit([](const auto& each) { return removalError(each); }, error);
}

}  // namespace quorvane
