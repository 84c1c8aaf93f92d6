#pragma once

#include "quorvane/base/CaseNames.h"

#include <string>

namespace quorvane {

enum class DockerServiceFault {
  cliNotFound,        ///< none of the places has a client that can be trusted
  engineUnavailable,  ///< the client reaches no engine
  commandFailed,      ///< the client refused; its words are in `message`
};
QV_CASE_NAMES(DockerServiceFault, cliNotFound, engineUnavailable, commandFailed)

/// Why there is nothing to show of Docker.
struct DockerServiceError {
  DockerServiceFault fault;
  std::string message = {};  ///< of the client, trimmed; foreign

  bool operator==(const DockerServiceError&) const = default;
};

/// "docker.error." and the name of the case.
std::string messageKey(DockerServiceFault fault);

}  // namespace quorvane
