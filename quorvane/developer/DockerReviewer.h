#pragma once

#include "quorvane/developer/DockerCleanupError.h"
#include "quorvane/developer/DockerService.h"

#include <optional>

namespace quorvane {

/// Makes the plan of a removal out of what a person selected. Changes nothing.
class DockerReviewer {
 public:
  /// Both outlive the object.
  DockerReviewer(const DockerClient& client, const Clock& clock) : client_(client), service_(client, clock) {}

  /// Of a review that was kept before, or, without one, of what the engine holds now. A kept review is followed to its
  /// own engine; verdicts are made anew from what that holds. Waits for the client.
  Outcome<DockerReview, DockerCleanupError> review(const DockerSelection& selection,
                                                   const std::optional<DockerSnapshot>& kept,
                                                   const StopToken& stop) const;

 private:
  const DockerClient& client_;
  DockerService service_;
};

}  // namespace quorvane
