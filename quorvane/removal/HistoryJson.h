#pragma once

#include "quorvane/base/Json.h"
#include "quorvane/core/AdministratorMoveTerminalState.h"
#include "quorvane/core/DockerTargets.h"
#include "quorvane/removal/CleaningHistory.h"

// The codec of the records that the history holds. Include it only in .cpp files, in place of base/Json.h.

namespace quorvane {

template <>
Json toJson(const AdministratorMoveTerminalState& state);

template <>
Outcome<AdministratorMoveTerminalState, JsonError> fromJson(const Json& json);

/// Refuses an item that is no file and still claims to be in the Trash, or on its way there or back.
template <>
Outcome<CleaningHistoryItem, JsonError> fromJson(const Json& json);

template <>
Json toJson(const HistoryLocation& location);

template <>
Outcome<HistoryLocation, JsonError> fromJson(const Json& json);

template <>
Json toJson(const DockerResourceKind& kind);

template <>
Outcome<DockerResourceKind, JsonError> fromJson(const Json& json);

}  // namespace quorvane
