#include "quorvane/developer/DockerReviewer.h"

#include "quorvane/developer/DockerRemovalCheck.h"

#include <algorithm>
#include <utility>

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
  const auto origins = selection.takesSafe ? originsOfImages(now->snapshot, stop) : DockerOrigins<DockerImageOrigin>();
  auto review = reviewOf(selection, kept ? *kept : now->snapshot, now->snapshot, origins);
  if (!review) return failure(DockerCleanupError(review.error()));
  return *std::move(review);
}

DockerOrigins<DockerImageOrigin> DockerReviewer::originsOfImages(const DockerSnapshot& now,
                                                                 const StopToken& stop) const {
  std::vector<std::string> identifiers;
  identifiers.reserve(now.images.size());
  for (const DockerImageRecord& image : now.images) identifiers.push_back(image.id);
  std::ranges::sort(identifiers);
  identifiers.erase(std::ranges::unique(identifiers).begin(), identifiers.end());
  return imageOrigins(DockerEngine(client_, now.cleanupScope.value().endpoint, stop), identifiers);
}

}  // namespace quorvane
