#include "quorvane/platform/PosixError.h"

#include <cerrno>

namespace quorvane {

bool PosixError::isMissing() const { return code == ENOENT; }

PosixError lastPosixError() { return {errno}; }

}  // namespace quorvane
