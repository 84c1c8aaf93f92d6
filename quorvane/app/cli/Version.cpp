#include "quorvane/app/cli/Version.h"

namespace quorvane {

std::string_view programVersion() { return QUORVANE_VERSION; }

}  // namespace quorvane
