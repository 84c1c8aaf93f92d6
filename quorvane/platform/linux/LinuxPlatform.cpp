#include "quorvane/platform/SystemPlatform.h"

namespace quorvane {

GitPrograms systemGitPrograms() { return {}; }

std::vector<FilePath> systemDockerPlaces() { return {{"/usr/bin/docker"}, {"/snap/bin/docker"}}; }

std::string_view systemName() { return "linux"; }

}  // namespace quorvane
