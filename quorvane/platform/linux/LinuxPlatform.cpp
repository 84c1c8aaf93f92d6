#include "quorvane/platform/SystemPlatform.h"

namespace quorvane {

GitPrograms systemGitPrograms() { return {}; }

std::string_view systemName() { return "linux"; }

}  // namespace quorvane
