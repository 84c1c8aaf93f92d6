#pragma once

#include "quorvane/base/CaseNames.h"
#include "quorvane/developer/DockerCleanup.h"
#include "quorvane/developer/DockerEngine.h"

#include <optional>
#include <string>
#include <vector>

namespace quorvane {

/// Whether an object is still listed by its engine.
enum class DockerPresence { unknown, present, absent };
QV_CASE_NAMES(DockerPresence, unknown, present, absent)

/// "cleanup.command." and the name of the case.
std::string messageKey(DockerPresence presence);

/// Why a target must not be removed at this moment, asked anew of its engine: it is another engine or another object, a
/// container is not at rest, has another name or ran again, an image has containers or other names than reviewed, a
/// volume is protected, has another size or was made at another time, or something of that cannot be told. Nothing when
/// all is as it was reviewed. A name that cannot be one is refused without asking.
std::optional<DockerRefusal> refusalNow(const DockerEngine& engine, const DockerRetryTarget& target);

/// Why the engine is not the one of this scope.
std::optional<DockerRefusal> refusalOfEngine(const DockerEngine& engine, const DockerCleanupScope& scope);

/// Why the build cache must not be pruned at this moment: nothing of it was reviewed (the engine is not asked then), it
/// is another engine's, or holds anything that no image shares and that was not reviewed, or that cannot be told.
std::optional<DockerRefusal> refusalNow(const DockerEngine& engine, const DockerCleanupOperation& prune);

/// What of the reviewed build cache is listed no more. Nothing when it cannot be listed whole.
std::optional<std::vector<DockerCleanupTarget>> goneOf(const DockerEngine& engine, const DockerCleanupOperation& prune);

/// Whether the listing of its kind still names the reviewed object. A listing with a line that is no full identifier
/// says nothing. A volume of the name that was made at another time is another volume; one of which that is not told
/// may be.
DockerPresence presenceOf(const DockerEngine& engine, const DockerRetryTarget& target);

}  // namespace quorvane
