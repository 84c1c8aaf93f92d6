#include "quorvane/platform/GitPrograms.h"

#include "quorvane/platform/SystemPlatform.h"

namespace quorvane {

GitPrograms systemGitPrograms() { return {}; }

}  // namespace quorvane
