#include "quorvane/developer/DockerReviewer.h"

#include "quorvane/developer/DockerRemovalCheck.h"

#include <algorithm>
#include <utility>

namespace quorvane {

namespace {

DockerOrigins<DockerImageOrigin> originsOf(const DockerEngine& engine, const std::vector<DockerImageRecord>& images) {
  std::vector<std::string> identifiers;
  identifiers.reserve(images.size());
  for (const DockerImageRecord& image : images) identifiers.push_back(image.id);
  std::ranges::sort(identifiers);
  identifiers.erase(std::ranges::unique(identifiers).begin(), identifiers.end());
  return imageOrigins(engine, identifiers);
}

}  // namespace

std::string messageKey(DockerReviewFault fault) { return "docker.review.error." + std::string(caseName(fault)); }

Outcome<DockerReview, DockerCleanupError> DockerReviewer::review(const DockerSelection& selection,
                                                                 const std::optional<DockerSnapshot>& kept,
                                                                 const StopToken& stop) const {
  if (kept && !kept->cleanupScope) return failure(DockerCleanupError(DockerReviewFault::notPinned));
  if (kept && !mayFollow(client_, *kept->cleanupScope))
    return failure(DockerCleanupError(DockerReviewFault::foreignScope));
  const auto now = kept ? service_.surveyAt(*kept->cleanupScope, stop) : service_.survey(stop);
  if (!now) return failure(DockerCleanupError(now.error()));
  const auto& scope = now->snapshot.cleanupScope;
  if (!scope) return failure(DockerCleanupError(DockerReviewFault::notPinned));
  DockerOrigins<DockerImageOrigin> origins;
  if (selection.takesSafe) origins = originsOf(DockerEngine(client_, scope->endpoint, stop), now->snapshot.images);
  auto review = reviewOf(selection, kept ? *kept : now->snapshot, now->snapshot, origins);
  if (!review) return failure(DockerCleanupError(review.error()));
  return *std::move(review);
}

}  // namespace quorvane
