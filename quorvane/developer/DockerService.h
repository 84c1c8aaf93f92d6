#pragma once

#include "quorvane/base/Outcome.h"
#include "quorvane/developer/DockerEngine.h"
#include "quorvane/developer/DockerSnapshot.h"
#include "quorvane/platform/Clock.h"

namespace quorvane {

/// Looks at what an engine holds; changes nothing. One call at a time.
class DockerService {
 public:
  /// Both outlive the object.
  DockerService(const DockerClient& client, const Clock& clock) : client_(client), clock_(clock) {}

  /// Pins the engine that the client leads to, and lists what it holds. Where it cannot be pinned the survey has no
  /// scope. Waits for the client, whose independent runs go side by side. Fails when no engine answers, or when images,
  /// containers or volumes cannot be listed; anything less is a notice.
  Outcome<DockerSurvey, DockerServiceError> survey(const StopToken& stop) const;

  /// The same of the engine that answers at the address of this scope; the survey has the scope as that engine is now.
  Outcome<DockerSurvey, DockerServiceError> surveyAt(const DockerCleanupScope& scope, const StopToken& stop) const;

 private:
  Outcome<DockerSurvey, DockerServiceError> surveyOf(const DockerEngine& engine,
                                                     std::optional<DockerCleanupScope> scope) const;

  const DockerClient& client_;
  const Clock& clock_;
};

/// The volumes of an engine. Nothing when they cannot be listed whole.
std::optional<std::vector<DockerVolumeRecord>> listedVolumes(const DockerEngine& engine);

/// The same with what the table of disk usage tells of them.
std::optional<std::vector<DockerVolumeRecord>> volumesOf(const DockerEngine& engine);

/// The build cache of an engine. Nothing when it cannot be listed whole.
std::optional<std::vector<DockerBuildCacheRecord>> buildCachesOf(const DockerEngine& engine);

}  // namespace quorvane
