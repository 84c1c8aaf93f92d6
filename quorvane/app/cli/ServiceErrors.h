#pragma once

#include "quorvane/app/cli/arguments/CommandError.h"
#include "quorvane/app/model/AppModel.h"

#include <string>

namespace quorvane {

/// What a person is told when a service refuses as a whole.
CommandError commandError(const IgnoreRuleError& error, const std::string& path = {});
CommandError commandError(const RecoveryStoreError& error);
CommandError commandError(const RemovalError& error);
CommandError commandError(const DockerServiceError& error);
CommandError commandError(const DockerCleanupError& error);

}  // namespace quorvane
