#pragma once

#include "quorvane/base/CaseNames.h"
#include "quorvane/developer/DockerResources.h"

#include <array>
#include <string>
#include <string_view>

namespace quorvane {

/// How safe it is to remove something.
enum class DockerCleanupSafety {
  safe,
  review,
  protected_,  ///< never removed
};
constexpr auto caseNamesOf(DockerCleanupSafety) {
  using namespace std::string_view_literals;
  return std::array{"safe"sv, "review"sv, "protected"sv};
}

/// "docker.safety." and the name of the case.
std::string titleKey(DockerCleanupSafety safety);

/// The verdicts. What is not known counts as the worse case.
namespace DockerSafetyPolicy {

/// `protected` with containers, or when it is not known whether there are any; without a name `safe`.
DockerCleanupSafety safetyOf(const DockerImageRecord& image);
/// Never `safe`; `protected` in every state but those of `isRemovableState`.
DockerCleanupSafety safetyOf(const DockerContainerRecord& container);
/// Never `safe`; `protected` when mounted, when that is not known, and when a label says to keep it.
DockerCleanupSafety safetyOf(const DockerVolumeRecord& volume);
/// `protected` when an image shares it, or a build uses it.
DockerCleanupSafety safetyOf(const DockerBuildCacheRecord& cache);

/// Whether a container in this state may be removed: exited, created or dead, in small or capital letters.
bool isRemovableState(std::string_view state);

/// "docker.container.state." and the state; "other" for one that is not known.
std::string stateKey(std::string_view state);

}  // namespace DockerSafetyPolicy

}  // namespace quorvane
