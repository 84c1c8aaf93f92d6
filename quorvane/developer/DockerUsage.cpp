#include "quorvane/developer/DockerUsage.h"

#include "quorvane/developer/DockerSafetyPolicy.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

namespace quorvane {

namespace {

std::int64_t sizeOf(const DockerImageRecord& record) { return record.sizeBytes; }
std::int64_t sizeOf(const DockerContainerRecord& record) { return record.sizeBytes.value_or(0); }
std::int64_t sizeOf(const DockerVolumeRecord& record) { return record.sizeBytes.value_or(0); }
std::int64_t sizeOf(const DockerBuildCacheRecord& record) { return record.sizeBytes; }

std::string_view identifierOf(const DockerVolumeRecord& record) { return record.name; }
template <class Record>
std::string_view identifierOf(const Record& record) {
  return record.id;
}

template <class Record>
DockerResourceUsage usageOf(DockerResourceKind kind, const std::vector<Record>& records) {
  DockerResourceUsage usage{.kind = kind};
  std::set<std::string_view> seen;  // an image has a record for each of its names
  for (const Record& record : records) {
    if (!seen.insert(identifierOf(record)).second) continue;
    ++usage.totalCount;
    addSize(usage.sizeBytes, sizeOf(record));
    if (DockerSafetyPolicy::safetyOf(record) == DockerCleanupSafety::protected_) {
      ++usage.activeCount;
    } else {
      addSize(usage.reclaimableBytes, sizeOf(record));
    }
  }
  return usage;
}

DockerResourceUsage usageOf(DockerResourceKind kind, const DockerSnapshot& snapshot) {
  switch (kind) {
    case DockerResourceKind::images: return usageOf(kind, snapshot.images);
    case DockerResourceKind::containers: return usageOf(kind, snapshot.containers);
    case DockerResourceKind::volumes: return usageOf(kind, snapshot.volumes);
    case DockerResourceKind::buildCache: return usageOf(kind, snapshot.buildCaches);
  }
  std::unreachable();
}

}  // namespace

std::vector<DockerResourceUsage> usagesOf(const DockerSnapshot& snapshot, const std::vector<DockerUsageLine>& summary) {
  std::vector<DockerResourceUsage> usages;
  usages.reserve(allDockerResourceKinds.size());
  for (const DockerResourceKind kind : allDockerResourceKinds) {
    DockerResourceUsage usage = usageOf(kind, snapshot);
    const auto line = std::ranges::find(summary, kind, &DockerUsageLine::kind);
    if (line != summary.end()) {
      usage.totalCount = line->totalCount;
      usage.activeCount = line->activeCount;
      usage.sizeBytes = line->sizeBytes;
      usage.reclaimableBytes = std::min(usage.reclaimableBytes, line->sizeBytes);
    }
    usages.push_back(usage);
  }
  return usages;
}

}  // namespace quorvane
