#include "quorvane/developer/DockerMemory.h"

namespace quorvane {

std::optional<CommandResult> DockerMemory::known(const std::string& endpoint, const Arguments& arguments) const {
  if (const auto silence = silences_.find(endpoint); silence != silences_.end()) return silence->second;
  const auto answer = answers_.find({endpoint, arguments});
  return answer == answers_.end() ? std::nullopt : std::optional(answer->second);
}

void DockerMemory::keep(const std::string& endpoint, const Arguments& arguments, const CommandResult& result) {
  if (result.exitCode < 0) silences_.insert_or_assign(endpoint, result);
  answers_.insert_or_assign({endpoint, arguments}, result);
}

}  // namespace quorvane
