#include "quorvane/developer/DockerReviewer.h"

#include "quorvane/developer/DockerRemovalCheck.h"

namespace quorvane {

std::string messageKey(DockerReviewFault fault) { return "docker.review.error." + std::string(caseName(fault)); }

Outcome<DockerReview, DockerCleanupError> DockerReviewer::review(const DockerSelection& selection,
                                                                 const std::optional<DockerSnapshot>& kept,
                                                                 const StopToken& stop) const {
  if (kept && !kept->cleanupScope) return failure(DockerCleanupError(DockerReviewFault::notPinned));
  if (kept && !mayFollow(client_, *kept->cleanupScope))
    return failure(DockerCleanupError(DockerReviewFault::foreignScope));
  const auto now = kept ? service_.surveyAt(*kept->cleanupScope, stop) : service_.survey(stop);
  if (!now) return failure(DockerCleanupError(now.error()));
  if (!now->snapshot.cleanupScope) return failure(DockerCleanupError(DockerReviewFault::notPinned));
  auto review = reviewOf(selection, kept ? *kept : now->snapshot, now->snapshot);
  if (!review) return failure(DockerCleanupError(review.error()));
  return *std::move(review);
}

}  // namespace quorvane
