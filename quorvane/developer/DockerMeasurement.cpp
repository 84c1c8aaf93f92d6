#include "quorvane/developer/DockerMeasurement.h"

#include "quorvane/developer/DockerCommands.h"
#include "quorvane/developer/DockerListing.h"

namespace quorvane {

std::optional<DockerDiskUsage> diskUsageOf(const DockerEngine& engine) {
  const CommandResult answer = engine.ask(DockerCommands::usageSummary());
  if (!answer.hasSucceeded()) return std::nullopt;
  DockerDiskUsage usage;
  for (const DockerUsageLine& line : dockerUsageLines(answer.output).records) usage[line.kind] = line.sizeBytes;
  return usage;
}

std::optional<std::int64_t> freedBytes(const std::optional<DockerDiskUsage>& before,
                                       const std::optional<DockerDiskUsage>& after, DockerResourceKind kind) {
  if (!before || !after) return std::nullopt;
  const auto was = before->find(kind), is = after->find(kind);
  if (was == before->end() || is == after->end()) return std::nullopt;
  return was->second - is->second;
}

}  // namespace quorvane
