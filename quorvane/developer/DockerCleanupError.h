#pragma once

#include "quorvane/base/CaseNames.h"
#include "quorvane/developer/DockerCleanupRetryService.h"
#include "quorvane/developer/DockerSelection.h"
#include "quorvane/developer/DockerServiceError.h"
#include "quorvane/removal/RecoveryStoreError.h"

#include <string>
#include <variant>

namespace quorvane {

/// Why a review cannot be acted upon.
enum class DockerReviewFault {
  notPinned,     ///< it has no scope, or the engine cannot be pinned now
  foreignScope,  ///< its engine is neither on this machine nor the one that the client leads to
};
QV_CASE_NAMES(DockerReviewFault, notPinned, foreignScope)

/// "docker.review.error." and the name of the case.
std::string messageKey(DockerReviewFault fault);

/// Why nothing at all was removed; a selector is one that the review does not hold.
using DockerCleanupError =
    std::variant<DockerServiceError, RecoveryStoreError, DockerReviewFault, DockerRetryFault, DockerSelector>;

}  // namespace quorvane
