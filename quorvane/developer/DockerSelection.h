#pragma once

#include "quorvane/base/Outcome.h"
#include "quorvane/developer/DockerCleanup.h"
#include "quorvane/developer/DockerOrigins.h"
#include "quorvane/developer/DockerSnapshot.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane {

/// One object that a person named.
struct DockerSelector {
  DockerResourceKind resource = DockerResourceKind::images;
  std::string id;  ///< a full identifier, or the name of a volume

  bool operator==(const DockerSelector&) const = default;
};

/// "image:sha256:...", "container:..." or "volume:NAME", whatever the name is; nothing for other text, and for an
/// identifier that is not a full one.
std::optional<DockerSelector> dockerSelectorFrom(std::string_view text);

struct DockerSelection {
  std::vector<DockerSelector> named = {};
  bool takesSafe = false;         ///< all images that are safe, but those that others were built on
  bool prunesBuildCache = false;  ///< one command of the engine's

  bool isEmpty() const { return named.empty() && !takesSafe && !prunesBuildCache; }
  bool operator==(const DockerSelection&) const = default;
};

/// What a person is to confirm.
struct DockerReview {
  DockerCleanupPlan plan = {};
  std::int64_t builtUponCount = 0;      ///< of the safe images: how many stay, since others were built on them
  bool hasNothingToPrune = false;       ///< the prune was selected, and left out
  std::optional<Date> retriedRun = {};  ///< the run whose failures these are, if it is a retry

  bool operator==(const DockerReview&) const = default;
};

/// Plans the removal of what was selected of `reviewed`, which may come from anywhere: names, tags and sizes are those
/// of the review, verdicts are those of `now`; all that is safe has to be safe in both, and each of these images
/// comes before the one that it was built on, as `origins` has it. The prune has the build cache that was reviewed, and
/// is left out without any. An
/// object that is not there now, is or was protected, or was reviewed of another engine is refused, and a container of
/// another name. Both snapshots have a scope. Fails with the first selector that the review does not hold while the
/// engine does: it was not reviewed.
Outcome<DockerReview, DockerSelector> reviewOf(const DockerSelection& selection, const DockerSnapshot& reviewed,
                                               const DockerSnapshot& now,
                                               const DockerOrigins<DockerImageOrigin>& origins = {});

}  // namespace quorvane
