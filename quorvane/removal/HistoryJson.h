#pragma once

#include "quorvane/base/Json.h"
#include "quorvane/core/AdministratorMoveTerminalState.h"
#include "quorvane/core/DockerTargets.h"

// The codec of the records that the history holds. Include it only in .cpp files, in place of base/Json.h.

namespace quorvane {

template <>
Json toJson(const AdministratorMoveTerminalState& state);

template <>
Outcome<AdministratorMoveTerminalState, JsonError> fromJson(const Json& json);

template <>
Json toJson(const DockerResourceKind& kind);

template <>
Outcome<DockerResourceKind, JsonError> fromJson(const Json& json);

}  // namespace quorvane
